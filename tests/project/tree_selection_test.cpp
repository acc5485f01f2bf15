#include "project/project_document.h"
#include "project/tree_selection.h"

#include <gtest/gtest.h>

using namespace kestrelon;

namespace {

// Voices (a1, Sub (b1)), c: shown top to bottom as Voices, a1, Sub, b1, c.
struct SmallTree {
    ProjectDocument document;
    ProjectItem* voices = document.createItem("Voices", 0x4003, "Voices");
    ProjectItem* a1 = document.createItem("Files\\a1.wav", 8, "a1.wav");
    ProjectItem* sub = document.createItem("Sub", 0x4002, "Sub");
    ProjectItem* b1 = document.createItem("Files\\b1.wav", 8, "b1.wav");
    ProjectItem* c = document.createItem("Files\\c.wav", 9, "c.wav");

    SmallTree()
    {
        voices->appendChild(a1);
        voices->appendChild(sub);
        sub->appendChild(b1);
        document.files() = {voices, c};
    }
};

using Items = std::vector<ProjectItem*>;

} // namespace

TEST(TreeSelection, ClickCtrlClickAndShiftRangesFollowTheShownOrder)
{
    SmallTree tree;
    TreeSelection selection(tree.document);
    EXPECT_EQ(selection.visibleOrder(), (Items{tree.voices, tree.a1, tree.sub, tree.b1, tree.c}));
    EXPECT_EQ(selection.primary(), nullptr);

    selection.click(tree.b1);
    selection.click(tree.a1);
    EXPECT_EQ(selection.items(), (Items{tree.a1}));

    selection.ctrlClick(tree.c);
    selection.ctrlClick(tree.voices);
    EXPECT_EQ(selection.items(), (Items{tree.voices, tree.a1, tree.c})); // tree order, not click order
    selection.ctrlClick(tree.a1); // toggles off, and becomes the anchor
    EXPECT_EQ(selection.items(), (Items{tree.voices, tree.c}));
    EXPECT_EQ(selection.primary(), tree.voices); // the focus is not selected: first selected

    selection.shiftClick(tree.b1); // a1..b1 replaces the selection
    EXPECT_EQ(selection.items(), (Items{tree.a1, tree.sub, tree.b1}));
    selection.shiftClick(tree.voices); // the anchor stays at a1; ranges run both ways
    EXPECT_EQ(selection.items(), (Items{tree.voices, tree.a1}));
    EXPECT_EQ(selection.anchor(), tree.a1);
    EXPECT_EQ(selection.focus(), tree.voices);

    selection.click(tree.c);
    selection.ctrlShiftClick(tree.sub); // adds c..sub to what is selected
    EXPECT_EQ(selection.items(), (Items{tree.sub, tree.b1, tree.c}));
    EXPECT_EQ(selection.sources(), (Items{tree.b1, tree.c}));
    EXPECT_EQ(selection.folders(), (Items{tree.sub}));
    EXPECT_EQ(selection.primary(), tree.sub);

    selection.selectAll();
    EXPECT_EQ(selection.items().size(), 5u);
    selection.clear();
    EXPECT_TRUE(selection.empty());
    selection.shiftClick(tree.sub); // no anchor: a plain click
    EXPECT_EQ(selection.items(), (Items{tree.sub}));
}

TEST(TreeSelection, CollapsingHidesAndDeselectsDescendantsAndPruneForgetsDestroyedItems)
{
    SmallTree tree;
    TreeSelection selection(tree.document);
    selection.click(tree.a1);
    selection.ctrlClick(tree.b1);
    selection.ctrlClick(tree.c);

    selection.setExpanded(tree.sub, false);
    EXPECT_EQ(selection.visibleOrder(), (Items{tree.voices, tree.a1, tree.sub, tree.c}));
    EXPECT_EQ(selection.items(), (Items{tree.a1, tree.c}));
    EXPECT_EQ(selection.focus(), tree.c); // still shown: stays
    selection.ctrlClick(tree.b1); // hidden: ignored
    EXPECT_EQ(selection.items(), (Items{tree.a1, tree.c}));

    selection.setExpanded(tree.voices, false);
    selection.selectAll(); // only what is shown
    EXPECT_EQ(selection.items(), (Items{tree.voices, tree.c}));
    selection.click(tree.c);
    selection.shiftClick(tree.voices);
    EXPECT_EQ(selection.items(), (Items{tree.voices, tree.c}));
    selection.setExpanded(tree.voices, true);
    EXPECT_FALSE(selection.isExpanded(tree.sub)); // its own state is kept

    selection.selectOnly({tree.a1, tree.b1}); // scripted: hidden or not; the last has the focus
    EXPECT_EQ(selection.items(), (Items{tree.a1, tree.b1}));
    tree.document.destroyItem(tree.sub);
    selection.prune();
    EXPECT_EQ(selection.items(), (Items{tree.a1}));
    EXPECT_EQ(selection.focus(), nullptr); // b1 had the focus and is gone
    EXPECT_EQ(selection.primary(), tree.a1);
}
