#include "project/project_document.h"

#include <gtest/gtest.h>

using namespace kestrelon;

TEST(ProjectDocument, TreeKeepsParentsAndOrderAndRebuildsTheTopLevelList)
{
    ProjectDocument doc;
    ProjectItem* group = doc.createItem("Voices", 3, "Voices");
    ProjectItem* inner = doc.createItem("Inner", 2, "Inner");
    ProjectItem* a = doc.createItem("Files\\a.wav", 8, "a.wav");
    ProjectItem* b = doc.createItem("Files\\b.wav", 8, "b.wav");
    ProjectItem* top = doc.createItem("Files\\t.wav", 9, "t.wav");
    ASSERT_TRUE(group->appendChild(a));
    ASSERT_TRUE(group->appendChild(inner));
    ASSERT_TRUE(group->insertChild(0, b));
    EXPECT_EQ(group->children(), (std::vector<ProjectItem*>{b, a, inner}));

    // Moving a node takes it from its old parent; a cycle is refused.
    ASSERT_TRUE(inner->appendChild(a));
    EXPECT_EQ(group->children(), (std::vector<ProjectItem*>{b, inner}));
    EXPECT_FALSE(inner->appendChild(group));
    EXPECT_FALSE(group->appendChild(group));

    doc.files() = {group, b, inner, a, top};
    doc.rebuildFilesList();
    EXPECT_EQ(doc.files(), (std::vector<ProjectItem*>{group, top}));

    // Destroying a group takes its subtree out of the tree, the lists and the project.
    doc.files() = {group, inner, a, top};
    doc.algorithms() = {a};
    doc.destroyItem(inner);
    EXPECT_EQ(group->children(), (std::vector<ProjectItem*>{b}));
    EXPECT_EQ(doc.files(), (std::vector<ProjectItem*>{group, top}));
    EXPECT_TRUE(doc.algorithms().empty());
    EXPECT_EQ(doc.itemCount(), 3u);
}
