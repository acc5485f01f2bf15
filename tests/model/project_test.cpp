// What a view of the project hears: each change once, after it is complete,
// with the keys of the rows it touched, and nothing for what changed nothing.
#include "model/project.h"

#include "codec/engine_fixture.h"

#include <gtest/gtest.h>

#include <set>

namespace kestrelon::test {
namespace {

struct Heard {
    ProjectChange::Kind kind;
    std::vector<std::string> rows;
    bool busy;
    bool operator==(const Heard&) const = default;
};

using Kind = ProjectChange::Kind;

class ProjectModelTest : public EngineTest {
protected:
    void SetUp() override
    {
        EngineTest::SetUp();
        model = std::make_unique<Project>(port, Project::Places{program(), temp / "config", program()});
        ASSERT_TRUE(model->session().newProject(utf8FromPath(temp.path()), "Heard"));
        model->setBodies(&bodies);
        model->setCodec({true, 1});
        following = model->changed.subscribe([this](const ProjectChange& change) {
            heard.push_back({change.kind, change.rows, model->session().busy()});
        });
        // Add Files through the project's own tree is heard as one edit of the tree.
        for (const AddedFile& added :
             model->tree()->addFiles(TreeTarget{}, {kSpeech / "hts1a.wav", kSpeech / "hts2a.wav"}))
            sources.push_back(added.item);
        ASSERT_EQ(sources.size(), 2u);
        ASSERT_EQ(take(), (std::vector<Heard>{{Kind::Tree, {}, false}}));
    }

    void TearDown() override
    {
        following.reset();
        port.queue(Answer::No); // "Save it before close?"
        model->session().closeProject();
        model.reset();
        EngineTest::TearDown();
    }

    // Takes what was heard since the last call.
    std::vector<Heard> take() { return std::exchange(heard, {}); }

    std::unique_ptr<Project> model;
    std::vector<ProjectItem*> sources;
    std::vector<Heard> heard;
    Subscription following;
};

TEST_F(ProjectModelTest, ViewsHearEachChangeOnceWithTheKeysOfItsRows)
{
    // A choice the bodies do not offer adds nothing: the project was busy
    // while it asked, and its rows did not change.
    LastEncodeSetting last;
    FixedEncodeSetting unknown(kBody, "ImaAdpcm", "12345");
    model->addEncodeData(sources, unknown, last, false, port);
    EXPECT_EQ(take(), (std::vector<Heard>{{Kind::Busy, {}, true}, {Kind::Busy, {}, false}}));
    EXPECT_TRUE(model->rows().empty());

    // Add Encode Data encodes the rows it adds: busy once for all of them.
    FixedEncodeSetting ima(kBody, "ImaAdpcm", "32000");
    model->addEncodeData(sources, ima, last, false, port);
    EXPECT_EQ(take(), (std::vector<Heard>{{Kind::Busy, {}, true}, {Kind::Busy, {}, false}, {Kind::Tree, {}, false}}));
    MainList rows = model->rows();
    ASSERT_EQ(rows.size(), 2u);
    ASSERT_FALSE(rows.rows()[0].record().encodeName.empty());
    const std::string first = rowKey(rows.rows()[0]);
    const std::string second = rowKey(rows.rows()[1]);

    // Clear drops the results of the rows that had any.
    rows.selectRows({0});
    EXPECT_EQ(model->clearRows(rows), 1u);
    EXPECT_EQ(take(), (std::vector<Heard>{{Kind::Rows, {first}, false}}));
    EXPECT_EQ(model->clearRows(rows), 0u);
    EXPECT_TRUE(take().empty());

    // Nothing selected, or no bodies to encode with: no batch, nothing heard.
    MainList none = model->rows();
    model->encode(none, false, port);
    model->setBodies(nullptr);
    model->encode(rows, false, port);
    EXPECT_TRUE(take().empty());
    EXPECT_TRUE(rows.rows()[0].record().encodeName.empty());

    // Busy before the first row and idle after the last, then the rows.
    model->setBodies(&bodies);
    EXPECT_TRUE(model->encode(rows, false, port).allDone());
    EXPECT_EQ(take(),
              (std::vector<Heard>{{Kind::Busy, {}, true}, {Kind::Busy, {}, false}, {Kind::Rows, {first}, false}}));
    EXPECT_FALSE(rows.rows()[0].record().encodeName.empty());

    // A decode keeps its measures on disk before anyone hears of the rows.
    const Subscription checking = model->changed.subscribe([&](const ProjectChange& change) {
        if (change.kind == Kind::Rows)
            EXPECT_TRUE(std::filesystem::exists(qualityFileOf(model->session().projectFile())));
    });
    EXPECT_TRUE(model->decode(rows, port).allDone());
    EXPECT_EQ(take().back(), (Heard{Kind::Rows, {first}, false}));
    EXPECT_TRUE(model->quality().find(rows.rows()[0].record()).has_value());

    // Delete asks first: No changes nothing, Yes changes the tree.
    port.queue(Answer::No);
    EXPECT_FALSE(model->deleteRows(rows, false));
    EXPECT_TRUE(take().empty());
    port.queue(Answer::Yes);
    EXPECT_TRUE(model->deleteRows(rows, false));
    EXPECT_EQ(take(), (std::vector<Heard>{{Kind::Tree, {}, false}}));
    ASSERT_EQ(model->rows().size(), 1u);
    EXPECT_EQ(rowKey(model->rows().rows()[0]), second); // its key outlived the row before it
}

// A row's key names its source and setting, not its place or its item: it is
// the same after the project is read again, and twins of one setting differ.
TEST_F(ProjectModelTest, RowKeysSurviveAReadingAndTellTwinsApart)
{
    addRecord(sources[0], "ImaAdpcm", "32000");
    addRecord(sources[1], "ImaAdpcm", "32000");
    addRecord(sources[1], "ImaAdpcm", "32000"); // a duplicated row
    addRecord(sources[1], "MuLaw", "64000");
    const auto keys = [&] {
        std::vector<std::string> all;
        const MainList rows = model->rows();
        for (const ListRow& row : rows.rows())
            all.push_back(rowKey(row));
        return all;
    };
    const std::vector<std::string> before = keys();
    EXPECT_EQ(std::set<std::string>(before.begin(), before.end()).size(), 4u);

    ASSERT_TRUE(model->session().saveProject());
    const std::filesystem::path file = model->session().projectFile();
    ASSERT_TRUE(model->session().closeProject());
    ASSERT_TRUE(model->session().openProject(file));
    EXPECT_EQ(keys(), before);
    EXPECT_EQ(take().back().kind, Kind::Opened);
}

} // namespace
} // namespace kestrelon::test
