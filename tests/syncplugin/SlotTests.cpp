// SPDX-License-Identifier: Apache-2.0

// The binary side of the plug-in contract: a plug-in in a library of its own is called through the
// numbers of its virtual slots, and is handed objects that are nothing but tables of slots.

#include "syncplugin/SyncPlugin.h"

#include <QtCore/QLibrary>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <utility>
#include <vector>

namespace {

using namespace Halvern::SyncPlugin;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

// A virtual destructor is slot 0 and takes two entries of the compiler's table: the first destroys
// the object, the second frees it, too. Slot n is entry n + 1.
constexpr std::size_t DestroyAndFree = 1;

template <class Result, class... Arguments>
Result CallEntry(void* object, std::size_t entry, Arguments... arguments)
{
    using Function = Result (*)(void*, Arguments...);
    void** const table = *static_cast<void***>(object);
    return reinterpret_cast<Function>(table[entry])(object, arguments...);
}

template <class Result, class... Arguments>
Result CallSlot(void* object, std::size_t slot, Arguments... arguments)
{
    return CallEntry<Result>(object, slot + 1, arguments...);
}

/// An object that only its table makes: calling entry n notes n and returns what is set for it.
struct TableObject
{
    static constexpr std::size_t Entries = 24;

    template <std::size_t Entry>
    static void* Call(TableObject* self)
    {
        self->calls.push_back(int(Entry));
        return self->results[Entry];
    }

    template <std::size_t... Entry>
    static std::array<void*, Entries> MakeTable(std::index_sequence<Entry...>)
    {
        return {reinterpret_cast<void*>(&Call<Entry>)...};
    }

    TableObject() { table = entries.data(); }
    void SetSlot(std::size_t slot, TableObject& object) { results[slot + 1] = &object; }
    /// The slots called, of an object whose slot 0 is its destructor.
    std::vector<int> Slots() const
    {
        std::vector<int> slots;
        for (const int entry : calls)
            slots.push_back(entry - 1);
        return slots;
    }

    void** table; // where the compiler looks for it: at offset 0
    std::array<void*, Entries> entries = MakeTable(std::make_index_sequence<Entries>());
    std::array<void*, Entries> results = {};
    std::vector<int> calls;
};

class ContractSlots : public ::testing::Test
{
protected:
    ContractSlots() { context.SetSlot(1, logger); }
    ~ContractSlots() override
    {
        if (object)
            CallEntry<void>(object, DestroyAndFree);
    }

    /// What the export's factory creates by its slot 1; the factory lives for one creation.
    void* Create(const char* exportName)
    {
        const auto function = reinterpret_cast<void* (*)()>(library.resolve(exportName));
        void* const factory = function ? function() : nullptr;
        if (!factory)
            return nullptr;
        object = CallSlot<void*>(factory, 1);
        CallEntry<void>(factory, DestroyAndFree);
        return object;
    }

    QLibrary library{QStringLiteral(SLOT_PLUGIN)};
    void* object = nullptr;
    TableObject context;
    TableObject logger;
};

const std::vector<int> AllLevels = {0, 1, 2, 3, 4, 5};

} // namespace

TEST_F(ContractSlots, AResolverReadsInSlotOneAndItsArrayIsFreedByTheHost)
{
    void* const resolver = Create("CreateFileLinkResolverFactory");
    ASSERT_TRUE(resolver) << library.errorString().toStdString();
    constexpr int Count = 50'000;
    FileLinkInfo* links = nullptr;
    int count = Count;

    EXPECT_TRUE(CallSlot<bool>(resolver, 1, static_cast<const WideChar*>(nullptr), &links, &count,
                               static_cast<void*>(&context)));

    ASSERT_TRUE(links);
    ASSERT_EQ(count, Count);
    const auto* const bytes = reinterpret_cast<const char*>(links);
    for (const int i : {0, 1, Count - 1}) {
        const char* const record = bytes + std::size_t(1044) * std::size_t(i);
        EXPECT_EQ(*reinterpret_cast<const quint32*>(record), 1044U);
        // The last character but one of the text at 4, and the first of the text at 524.
        EXPECT_EQ(*reinterpret_cast<const quint16*>(record + 4 + 2 * 258), quint16(i + 1));
        EXPECT_EQ(*reinterpret_cast<const quint16*>(record + 524), quint16(0xFF00 + i));
    }
    delete[] links;
}

TEST_F(ContractSlots, AResolverRewritesInSlotTwo)
{
    void* const resolver = Create("CreateFileLinkResolverFactory");
    ASSERT_TRUE(resolver);
    const WideChar file[] = {u'f', 0};
    std::vector<char> records(2 * 1044);
    *reinterpret_cast<WideChar*>(records.data() + 1044 + 524) = u'p';

    EXPECT_TRUE(CallSlot<bool>(resolver, 2, &file[0], static_cast<void*>(records.data()), 2,
                               static_cast<void*>(&context)));
}

TEST_F(ContractSlots, AResolverFindsTheLoggerInSlotOneOfItsContextAndTheLevelsInTheirOrder)
{
    void* const resolver = Create("CreateFileLinkResolverFactory");
    ASSERT_TRUE(resolver);
    FileLinkInfo* links = nullptr;
    int count = 0;

    CallSlot<bool>(resolver, 1, static_cast<const WideChar*>(nullptr), &links, &count,
                   static_cast<void*>(&context));

    delete[] links;
    EXPECT_THAT(context.Slots(), ElementsAre(1));
    // A logger has no virtual destructor: its first level is the first entry.
    EXPECT_THAT(logger.calls, ElementsAreArray(AllLevels));
}

TEST_F(ContractSlots, ALayoutAssignsInSlotOneAndFindsTheOperationsOfAMappingInTheirOrder)
{
    void* const layout = Create("CreateSyncPluginFactory");
    ASSERT_TRUE(layout);
    TableObject mapping;
    TableObject children;
    mapping.SetSlot(13, children);

    EXPECT_TRUE(
        CallSlot<bool>(layout, 1, static_cast<void*>(&mapping), static_cast<void*>(&context)));

    EXPECT_THAT(mapping.Slots(),
                ElementsAre(1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16));
    EXPECT_THAT(children.Slots(), ElementsAre(1, 2, 3));
    EXPECT_THAT(context.Slots(), ElementsAre(1));
    EXPECT_THAT(logger.calls, ElementsAreArray(AllLevels));
}

TEST_F(ContractSlots, ALibraryStatesWhatItWasBuiltWithThroughAPlainFunction)
{
    const auto function =
        reinterpret_cast<quint64 (*)()>(library.resolve("GetSyncPluginContractVersion"));
    ASSERT_TRUE(function) << library.errorString().toStdString();
    // Version 1, records of 1044 bytes, characters of 2, libstdc++, objects laid out as by GCC.
    EXPECT_EQ(function(), 0x5350'0001'0414'02'11U);
}

TEST(ReferenceIds, OfCompanionsAndOfMembersOfASetBeginWithTheirMark)
{
    EXPECT_EQ(CompanionId("a#b.sch"), "companion:a#b.sch");
    EXPECT_EQ(SetMemberId("IM#wood", "1001"), "set:IM#wood#1001");
}
