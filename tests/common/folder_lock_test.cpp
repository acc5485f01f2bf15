#include "common/folder_lock.h"
#include "support/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

using namespace kestrelon;
namespace fs = std::filesystem;

TEST(FolderLock, OneHolderAtATimeNamedToTheOthersAndTakenOverFromTheDead)
{
    test::TempDir dir;
    FolderLock first;
    ASSERT_EQ(first.take(dir.path()), FolderLock::Outcome::Taken);
    FolderLock second;
    ASSERT_EQ(second.take(dir.path()), FolderLock::Outcome::HeldByOther);
    EXPECT_EQ(second.holder().process, long(::getpid()));
    EXPECT_EQ(second.holder().program, "tests_common");
    EXPECT_FALSE(second.holder().host.empty());
    EXPECT_FALSE(second.held());

    FolderLock moved = std::move(first); // the lock goes with the object
    EXPECT_EQ(second.take(dir.path()), FolderLock::Outcome::HeldByOther);
    moved.release();
    EXPECT_FALSE(fs::exists(dir / FolderLock::kFileName));
    EXPECT_EQ(second.take(dir.path()), FolderLock::Outcome::Taken);
    second.release();

    // A holder killed without letting go: its note stays, its lock does not.
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        FolderLock dying;
        ::_exit(dying.take(dir.path()) == FolderLock::Outcome::Taken ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    ASSERT_TRUE(fs::exists(dir / FolderLock::kFileName));
    FolderLock heir;
    EXPECT_EQ(heir.take(dir.path()), FolderLock::Outcome::Taken);

    FolderLock nowhere;
    EXPECT_EQ(nowhere.take(dir / "missing"), FolderLock::Outcome::Failed);
    EXPECT_FALSE(nowhere.error().empty());
}
