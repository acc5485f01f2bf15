#include "common/file_io.h"
#include "common/messages.h"
#include "common/paths.h"
#include "host/algorithm_registry.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

using namespace kestrelon;
using kestrelon::test::readBytes;
using kestrelon::test::ScriptedPort;
using kestrelon::test::TempDir;
using kestrelon::test::writeBytes;

namespace {

std::vector<std::string> namesOf(const std::vector<AlgoRegEntry>& entries)
{
    std::vector<std::string> names;
    for (const AlgoRegEntry& entry : entries)
        names.push_back(entry.name);
    return names;
}

void touchLibrary(const TempDir& project, const std::string& name)
{
    writeBytes(algorithmLibraryPath(project.path(), name), "library");
}

} // namespace

TEST(AlgorithmRegistry, PruningDropsEntriesWhoseLibraryIsGone)
{
    TempDir project;
    const std::string eol(kNativeEol);
    writeBytes(algorithmRegistryPath(project.path()), "[COUNT]\nCount=3\n"
                                                      "[ITEM0]\nalgorithm=ImaAdpcm\nPath=Algos\\ImaAdpcm.so\n"
                                                      "[ITEM1]\nalgorithm=MuLaw\nPath=Algos\\MuLaw.so\n"
                                                      "[ITEM2]\nalgorithm=Codec2\nPath=Algos\\Codec2.so\n");
    touchLibrary(project, "ImaAdpcm");
    touchLibrary(project, "Codec2");

    std::vector<AlgoRegEntry> entries;
    ScriptedPort port;
    ASSERT_TRUE(loadAlgorithmRegistry(project.path(), entries, port));
    ASSERT_TRUE(pruneAndSaveAlgorithmRegistry(project.path(), entries));
    EXPECT_EQ(namesOf(entries), (std::vector<std::string>{"ImaAdpcm", "Codec2"}));
    EXPECT_EQ(readBytes(algorithmRegistryPath(project.path())),
              "[COUNT]" + eol + "Count=2" + eol + "[ITEM0]" + eol + "algorithm=ImaAdpcm" + eol +
                  "Path=Algos\\ImaAdpcm.so" + eol + "[ITEM1]" + eol + "algorithm=Codec2" + eol +
                  "Path=Algos\\Codec2.so" + eol);

    // Neighbours that are both gone: the entry moving into a freed place is
    // examined too.
    entries = {{"A", "a"}, {"Gone1", "g"}, {"Gone2", "g"}, {"B", "b"}, {"Gone3", "g"}, {"", "empty name"}};
    touchLibrary(project, "A");
    touchLibrary(project, "B");
    ASSERT_TRUE(pruneAndSaveAlgorithmRegistry(project.path(), entries));
    EXPECT_EQ(namesOf(entries), (std::vector<std::string>{"A", "B"}));
    EXPECT_TRUE(port.messages().empty());
    EXPECT_FALSE(pruneAndSaveAlgorithmRegistry(project.path() / "no project", entries));
}

TEST(AlgorithmRegistry, ReadsOnlyTheItemsBelowCountThatTheFileHolds)
{
    TempDir project;
    std::vector<AlgoRegEntry> entries{{"stale", "stale"}};
    ScriptedPort port;

    // No registry: an empty list, no message.
    EXPECT_FALSE(loadAlgorithmRegistry(project.path(), entries, port));
    EXPECT_TRUE(entries.empty());

    // A huge Count costs nothing; an item without keys still counts.
    writeBytes(
        algorithmRegistryPath(project.path()),
        "[COUNT]\nCount=2147483647\n[ITEM5]\nalgorithm=Five\nPath=p5\n[ITEM0]\nalgorithm=Zero\nPath=p0\n[ITEM2]\n");
    ASSERT_TRUE(loadAlgorithmRegistry(project.path(), entries, port));
    EXPECT_EQ(namesOf(entries), (std::vector<std::string>{"Zero", "", "Five"}));
    EXPECT_EQ(entries[0].path, "p0");
    EXPECT_EQ(entries[2].path, "p5");

    writeBytes(algorithmRegistryPath(project.path()), "[COUNT]\nCount=1\n[ITEM0]\nalgorithm=A\n[ITEM1]\nalgorithm=B\n");
    ASSERT_TRUE(loadAlgorithmRegistry(project.path(), entries, port));
    EXPECT_EQ(namesOf(entries), std::vector<std::string>{"A"});
    EXPECT_TRUE(port.messages().empty());

    writeBytes(algorithmRegistryPath(project.path()), "[COUNT]\nCount=1x\n[ITEM0]\nalgorithm=A\n");
    ASSERT_TRUE(loadAlgorithmRegistry(project.path(), entries, port));
    EXPECT_TRUE(entries.empty());
    EXPECT_EQ(port.texts(), std::vector<std::string>{std::string(msg::kInvalidData)});
}
