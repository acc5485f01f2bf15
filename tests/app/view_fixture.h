#pragma once
// A project on disk with rows to show: the project file is written from a
// list of rows and opened in a session, as the workbench opens one.
#include "app/views/main_view.h"
#include "app_support.h"
#include "model/project.h"
#include "settings/settings_store.h"
#include "support/files.h"
#include "support/scripted_port.h"
#include "support/temp_dir.h"
#include "wave/wave_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace kestrelon::test {

inline std::string str(std::string_view text)
{
    return std::string(text);
}

struct Row {
    std::string source; // file name in Files
    std::string body;
    std::string algorithm;
    std::string bitRate;
    std::string encodeSize;
    std::string decodeSize;
    std::string encodeName;
    std::string decodeName;
    std::string renameEncode;
};

inline std::string projectText(const std::vector<Row>& rows)
{
    std::vector<std::string> sources;
    for (const Row& row : rows)
        if (std::find(sources.begin(), sources.end(), row.source) == sources.end())
            sources.push_back(row.source);
    std::string text = "# Begin Project\n\n# Begin Files\n";
    for (const std::string& source : sources) {
        text += "# Begin Source File\nSOURCE=Files\\" + source + "\nID=" + source + "\nPARAM=9\n";
        for (const Row& row : rows) {
            if (row.source != source)
                continue;
            text += "# Begin EditInfo\nAlgoName=" + row.algorithm + "\nBodyName=" + row.body +
                    "\nEncodeName=" + row.encodeName + "\nEncodeSize=" + row.encodeSize +
                    "\nRenameEncode=" + row.renameEncode + "\nDecodeName=" + row.decodeName +
                    "\nDecodeSize=" + row.decodeSize + "\nEncodeBitRate=" + row.bitRate +
                    "\nMultiSelect=0\n# End EditInfo\n";
        }
        text += "# End Source File\n";
    }
    return text + "# End Files\n\n# Begin Algorithms\n# End Algorithms\n\n# End Project\n";
}

class ViewTest : public ::testing::Test {
protected:
    void TearDown() override
    {
        if (session.isOpen() && session.document().isModified())
            port.queue(Answer::No); // "Save it before close?"
        session.closeProject();
        std::filesystem::current_path(start);
    }

    // Writes the project with `rows`; each source's Files entry holds
    // `fileBytes` unless the test planted it first.
    void open(const std::vector<Row>& rows, const std::string& fileBytes = "RIFF")
    {
        for (const Row& row : rows)
            if (!std::filesystem::exists(project / "Files" / row.source))
                writeBytes(project / "Files" / row.source, fileBytes);
        writeBytes(project / "Demo.ptp", projectText(rows));
        ASSERT_TRUE(session.openProject(project / "Demo.ptp"));
    }

    // Puts `view` on this test's settings and project.
    void attach(MainView& view)
    {
        view.setSettings(&settings);
        view.setProject(&model);
    }

    // Where a closed project leaves the current folder: a folder that outlives
    // every test (the folder a test ran in may be gone by then).
    std::filesystem::path start = std::filesystem::temp_directory_path();
    TempDir temp;
    std::filesystem::path project = temp / "Demo";
    ScriptedPort port;
    Project model{port, {KESTRELON_PROGRAM_DIR, temp / "config", start}};
    ProjectSession& session = model.session();
    SettingsStore settings;
};

} // namespace kestrelon::test
