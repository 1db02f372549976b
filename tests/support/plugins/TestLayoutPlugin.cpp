// SPDX-License-Identifier: Apache-2.0

#include "CallLog.h"

#include "syncplugin/SyncPlugin.h"

#include <memory>
#include <stdexcept>
#include <vector>

// A layout that puts every linked file, at any depth, into the folder "layout" beside the target
// of the top-level file, under its own name. Names of source files tell it to do otherwise:
//
//     *leave*          a linked file that gets no target
//     *nofollow*       a linked file whose links are not followed (it does get its target)
//     *keepname*       a linked file whose target is never renamed
//     *replaced*       a linked file in whose place the file of that name in the folder
//                      "replacement" beside it is imported
//     *forbidden*      a linked file on which flags are set that only the host may set
//     *outside*        a linked file that is to go beside the cloud folder, into "outside"
//     *layoutfails*    a top-level file for which the layout fails
//     *layoutthrows*   a top-level file for which it throws

namespace {

using namespace Halvern::SyncPlugin;
namespace Test = Halvern::Test;
using WideString = std::basic_string<WideChar>;

std::filesystem::path Ask(IFileMapping& mapping,
                          unsigned int (IFileMapping::*question)(WideChar*, int))
{
    const unsigned int length = (mapping.*question)(nullptr, 0);
    WideString answer(length + 1, 0);
    (mapping.*question)(answer.data(), int(length) + 1);
    answer.resize(length);
    return answer;
}

bool Holds(const std::filesystem::path& file, const std::string& word)
{
    return Test::ToUtf8(file.filename()).find(word) != std::string::npos;
}

void SetFlags(IFileMapping& mapping, const std::filesystem::path& source)
{
    if (Holds(source, "nofollow"))
        mapping.SetFlag(MappingSkipFileLinks, true);
    if (Holds(source, "keepname"))
        mapping.SetFlag(MappingKeepTargetName, true);
    if (Holds(source, "forbidden"))
        mapping.SetFlag(
            MappingSelected | MappingUnchanged | MappingCollision | MappingSourceMissing, true);
}

void Replace(IFileMapping& mapping, const std::filesystem::path& source)
{
    const std::filesystem::path other = source.parent_path() / "replacement" / source.filename();
    mapping.ChangeSourceFile(other.generic_string<WideChar>().c_str());
}

/// The folder "outside" beside the folder "cloud" above.
std::filesystem::path Outside(std::filesystem::path folder)
{
    while (folder.has_relative_path() && folder.filename() != "cloud")
        folder = folder.parent_path();
    return folder.parent_path() / "outside";
}

/// Whether the links of a file are to be followed.
bool AssignChild(IFileMapping& child, const std::filesystem::path& folder)
{
    const std::filesystem::path source = Ask(child, &IFileMapping::GetSourceFile);
    if (Holds(source, "leave"))
        return false;
    const WideString target = (Holds(source, "outside") ? Outside(folder) / source.filename()
                                                        : folder / source.filename())
                                  .generic_string<WideChar>();
    // A file that has its target was here before, perhaps along another path.
    if (!child.SetTargetFile(target.c_str(), false))
        return false;
    SetFlags(child, source);
    if (Holds(source, "replaced"))
        Replace(child, source);
    return !Holds(source, "nofollow");
}

void AssignChildren(IFileMapping& top, const std::filesystem::path& folder)
{
    std::vector<std::unique_ptr<IFileMappingIterator>> open;
    open.emplace_back(top.GetChildren());
    while (!open.empty()) {
        // Without asking HasNext: after the last child there is none.
        IFileMapping* const child = open.back()->Next();
        if (!child)
            open.pop_back();
        else if (AssignChild(*child, folder))
            open.emplace_back(child->GetChildren());
    }
}

class TestLayout : public IFileLayout
{
public:
    bool AssignTargetPaths(IFileMapping* mapping, IFileLayoutContext* context) override
    {
        const std::filesystem::path source = Ask(*mapping, &IFileMapping::GetSourceFile);
        Test::LogCall("AssignTargetPaths " + Test::ToUtf8(source));
        if (Holds(source, "layoutthrows"))
            throw std::runtime_error("test layout: told to throw");
        if (Holds(source, "layoutfails")) {
            context->GetLogger()->LogWarn(Test::ToWide("test layout: told to fail").c_str());
            return false;
        }
        AssignChildren(*mapping,
                       Ask(*mapping, &IFileMapping::GetTargetFile).parent_path() / "layout");
        return true;
    }
};

class Factory : public ISyncPluginFactory
{
public:
    IFileLayout* CreateFileLayout() override { return new TestLayout; }
};

} // namespace

SYNCPLUGIN_EXPORT ISyncPluginFactory* CreateSyncPluginFactory()
{
    return new Factory;
}
