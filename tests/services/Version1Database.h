// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Halvern::Test {

/// A database that version 1 wrote, as SQL: a root, a folder, items of two users, one of them under
/// a path that is not cleaned, links, and a copy history. An item with the id 7 was deleted from
/// it.
constexpr char version1Database[] = R"sql(
BEGIN TRANSACTION;
PRAGMA application_id = 1668248179;
PRAGMA user_version = 1;
CREATE TABLE copy_history (
    id                         INTEGER PRIMARY KEY,
    authentication_id          INTEGER NOT NULL,
    source_key                 TEXT    NOT NULL,
    source_path                TEXT    NOT NULL,
    target_path                TEXT    NOT NULL,
    source_modified            INTEGER,
    source_size                INTEGER NOT NULL,
    target_modified            INTEGER,
    target_size                INTEGER NOT NULL,
    copy_date                  INTEGER,
    source_links_extracted_at  INTEGER,
    target_links_extracted_at  INTEGER,
    UNIQUE (authentication_id, source_key)
);
INSERT INTO "copy_history" VALUES(1,7,'/work/part.prt','/Work/Part.PRT','/Cloud/Demo/Part.PRT',1600000000000,5,NULL,-1,1700000000123,NULL,NULL);
INSERT INTO "copy_history" VALUES(2,7,'/work/low.prt','/Work/low.prt','/Cloud/Demo/low.prt',1600000000000,5,NULL,-1,1700000000123,NULL,NULL);
INSERT INTO "copy_history" VALUES(3,8,'/work/part.prt','/Work/Part.PRT','/Cloud/Demo/Part.PRT',1600000000000,5,NULL,-1,1700000000123,NULL,NULL);
CREATE TABLE copy_history_links (
    history_id      INTEGER NOT NULL REFERENCES copy_history (id) ON DELETE CASCADE,
    side            INTEGER NOT NULL, -- 0 source, 1 target
    position        INTEGER NOT NULL,
    linked_item_id  INTEGER NOT NULL,
    reference_id    TEXT    NOT NULL,
    path            TEXT    NOT NULL,
    cloud_item_id   TEXT    NOT NULL,
    PRIMARY KEY (history_id, side, position)
) WITHOUT ROWID;
INSERT INTO "copy_history_links" VALUES(1,0,0,-1,'r','x','');
INSERT INTO "copy_history_links" VALUES(2,0,0,-1,'r','x','');
INSERT INTO "copy_history_links" VALUES(3,0,0,-1,'r','x','');
CREATE TABLE item_links (
    item_id         INTEGER NOT NULL REFERENCES items (id) ON DELETE CASCADE,
    position        INTEGER NOT NULL,
    linked_item_id  INTEGER NOT NULL,
    reference_id    TEXT    NOT NULL,
    path            TEXT    NOT NULL,
    cloud_item_id   TEXT    NOT NULL,
    PRIMARY KEY (item_id, position)
) WITHOUT ROWID;
INSERT INTO "item_links" VALUES(4,0,3,'r1','Part.PRT','c3');
INSERT INTO "item_links" VALUES(4,1,-1,'r2','gone.prt','');
CREATE TABLE items (
    id                        INTEGER PRIMARY KEY AUTOINCREMENT,
    kind                      INTEGER NOT NULL,
    authentication_id         INTEGER NOT NULL,
    path_key                  TEXT    NOT NULL,
    local_path                TEXT    NOT NULL,
    cloud_path                TEXT    NOT NULL,
    cloud_root                TEXT    NOT NULL,
    cloud_item_id             TEXT    NOT NULL,
    product_configuration_id  INTEGER NOT NULL,
    root_folder_id            INTEGER,
    parent_folder_id          INTEGER REFERENCES items (id) ON DELETE CASCADE,
    source_consumer_id        TEXT    NOT NULL,
    links_extracted_at        INTEGER,
    sync_option               INTEGER NOT NULL,
    UNIQUE (path_key, authentication_id)
);
INSERT INTO "items" VALUES(1,2,7,'/cloud','/Cloud','/','/','deb83318-0ca2-479f-a56b-793e0468ff2d',-1,1,NULL,'',NULL,0);
INSERT INTO "items" VALUES(2,1,7,'/cloud/demo','/Cloud/Demo','/Demo','/','ac9faea6-5c33-461a-8574-1a8d6c115aeb',-1,1,1,'',NULL,0);
INSERT INTO "items" VALUES(3,0,7,'/cloud/demo/part.prt','/Cloud/Demo/Part.PRT','/Demo/x','/','7ebd9118-44d3-4461-a9d9-aea2df24ea21',-1,1,2,'',1700000000123,1024);
INSERT INTO "items" VALUES(4,0,7,'/cloud/demo/ärmel.asm','/Cloud/Demo/Ärmel.asm','/Demo/x','/','c91f1a47-766f-49ad-b423-8c8d7616904b',-1,1,2,'',1700000000123,1024);
INSERT INTO "items" VALUES(5,0,7,'/cloud/demo/low.prt','/Cloud/./Demo//low.prt','/Demo/x','/','d0273ec4-2a83-4847-b542-2a331855b9d1',-1,1,2,'',1700000000123,1024);
INSERT INTO "items" VALUES(6,0,8,'/cloud/demo/part.prt','/Cloud/Demo/Part.PRT','/Demo/x','/','beee1627-3702-4636-9e37-10155e59865c',-1,1,2,'',1700000000123,1024);
CREATE INDEX items_by_parent ON items (parent_folder_id);
DELETE FROM "sqlite_sequence";
INSERT INTO "sqlite_sequence" VALUES('items',7);
COMMIT;
)sql";

} // namespace Halvern::Test
