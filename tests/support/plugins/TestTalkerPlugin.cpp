// SPDX-License-Identifier: Apache-2.0

#include "CallLog.h"

#include "syncplugin/SyncPlugin.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <thread>
#include <vector>

// A resolver that prints what it should log: the file, through everything that leads to standard
// output and standard error. There are no links in its files. Some lines are orders:
//
//     system ...   a command to run
//     abort        ends the process after words on standard error
//     exit N       ends the process in order, with that code
//     crash        writes where nothing is
//     loop         never returns
//     memory       takes memory until there is none
//     throw ...    throws those words

namespace {

using namespace Halvern::SyncPlugin;
namespace Test = Halvern::Test;

constexpr std::size_t Megabyte = 1 << 20;

void Crash()
{
    volatile int* volatile nowhere = nullptr;
    *nowhere = 1;
}

void Loop()
{
    while (true)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

void TakeMemory()
{
    // As far as a test may go where nothing limits it.
    std::vector<std::vector<char>> taken;
    for (int i = 0; i < 1024; ++i)
        taken.emplace_back(Megabyte, 'x');
}

void Do(const std::string& line)
{
    if (line.rfind("exit ", 0) == 0)
        std::exit(std::stoi(line.substr(5)));
    if (line.rfind("throw ", 0) == 0)
        throw std::runtime_error(line.substr(6));
    if (line == "crash")
        Crash();
    if (line == "loop")
        Loop();
    if (line == "memory")
        return TakeMemory();
    if (line.rfind("system ", 0) == 0) {
        const int answer = std::system(line.substr(7).c_str());
        std::cerr << "ended with " << answer << std::endl;
    } else if (line == "abort") {
        std::fputs("assertion failed\n", stderr);
        std::abort();
    } else {
        std::printf("printf: %s\n", line.c_str());
        std::cout << "cout: " << line << std::endl;
        std::cerr << "cerr: " << line << std::endl;
        // The last one waits in the buffer until the process ends.
        std::printf("late: %s\n", line.c_str());
    }
}

class TestTalker : public IFileLinkResolver
{
public:
    bool GetFileLinks(const WideChar* file, FileLinkInfo** links, int* count,
                      IFileLinkResolverContext*) override
    {
        std::ifstream in{std::filesystem::path(file)};
        for (std::string line; std::getline(in, line);)
            Do(line);
        *links = nullptr;
        *count = 0;
        return true;
    }

    bool RepathFileLinks(const WideChar*, const FileLinkInfo*, int,
                         IFileLinkResolverContext*) override
    {
        return false;
    }
};

class Factory : public IFileLinkResolverFactory
{
public:
    IFileLinkResolver* CreateFileLinkResolver() override { return new TestTalker; }
};

} // namespace

SYNCPLUGIN_EXPORT IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return new Factory;
}
