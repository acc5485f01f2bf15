// The main list and its panels on real project folders: what each cell
// shows, how headers sort, the list settings, deleting through the port, a
// big project, and export driven through its dialog.
#include "view_fixture.h"

#include "app/dialogs/encode_info_dialog.h"
#include "app/dialogs/export_dialog.h"
#include "app/dialogs/progress_dialog.h"
#include "app/dialogs/read_only_form.h"
#include "app/views/info_panels.h"
#include "app/views/list_columns.h"
#include "app/views/record_table_model.h"
#include "bodies/body_settings.h"
#include "codec/encoded_header.h"
#include "codec/interim_packer.h"
#include "codec/project_algorithms.h"
#include "common/messages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

#include <set>

using namespace kestrelon;
using namespace kestrelon::test;
namespace fs = std::filesystem;

namespace {

QString cell(const MainView& view, int row, ListColumn column)
{
    return view.table()->model()->index(row, static_cast<int>(column)).data().toString();
}

// A shown row's cells, joined by '|'.
QString rowText(const MainView& view, int row)
{
    QStringList cells;
    for (int column = 0; column < kListColumnCount; ++column)
        cells << cell(view, row, ListColumn(column));
    return cells.join(QLatin1Char('|'));
}

std::vector<QString> columnTexts(const MainView& view, ListColumn column)
{
    std::vector<QString> texts;
    for (int row = 0; row < view.table()->model()->rowCount(); ++row)
        texts.push_back(cell(view, row, column));
    return texts;
}

void selectShownRows(MainView& view, std::initializer_list<int> rows)
{
    QItemSelectionModel* selection = view.table()->selectionModel();
    selection->clearSelection();
    for (const int row : rows)
        selection->select(view.table()->model()->index(row, 0),
                          QItemSelectionModel::Select | QItemSelectionModel::Rows);
    if (rows.size())
        selection->setCurrentIndex(view.table()->model()->index(*rows.begin(), 0), QItemSelectionModel::NoUpdate);
}

} // namespace

TEST_F(ViewTest, HeadersAndCellsShowTheRecordsAsTheyStand)
{
    writeBytes(project / "Files" / "hello.wav", std::string(9876, 'w'));
    writeBytes(project / "Files" / "bye.wav", std::string(1000, 'w'));
    // The measures of hello.wav's decode; a line for a decode of another size is not its.
    writeBytes(project / "Demo.quality", "# decode\tsize\tsnr\tmel\tduration\tlag\n"
                                         "SAF1.dfn\t9000\t22.316\t2.89\t1.0000\t0\n"
                                         "SAF2.dfn\t10\t9\t9\t9\t0\n");
    open({{"hello.wav", "B1", "ImaAdpcm", "16000", "1234", "9000", "SAF1.tmp", "SAF1.dfn", ""},
          {"hello.wav", "", "", "", "", "", "", "", ""},
          {"bye.wav", "B1", "MuLaw", "64000", "2000", "", "SAF2.tmp", "", ""}});
    MainView view(port);
    attach(view);

    const QAbstractItemModel* shown = view.table()->model();
    ASSERT_EQ(shown->columnCount(), kListColumnCount);
    QStringList headers;
    for (int column = 0; column < kListColumnCount; ++column)
        headers << shown->headerData(column, Qt::Horizontal).toString();
    EXPECT_EQ(headers.join(QLatin1Char('|')),
              "|File Name|Body|Algorithm|Bit Rate (bps)|Original Play (PC)|Encode Play (Board)|"
              "Encode File Size (byte)|Decode Play (PC)|Compression Rate (%)|Decode File Size (byte)|"
              "Seg. SNR (dB)|Mel Distance (dB)|Duration Ratio");

    // Sorted by file name, as a fresh profile asks; equal names keep the project's order.
    // 2000 of 1000 is above 100; 1234 of 9876 is 12.49...; no encode size, no rate. A play
    // cell shows its glyph only when there is something to play.
    ASSERT_EQ(shown->rowCount(), 3);
    EXPECT_EQ(rowText(view, 0), QStringLiteral("|bye.wav|B1|MuLaw|64000|\u25B6|\u25B6|2000||200||||"));
    EXPECT_EQ(rowText(view, 1),
              QStringLiteral("|hello.wav|B1|ImaAdpcm|16000|\u25B6|\u25B6|1234|\u25B6|12|9000|22.32|2.89|1.00"));
    EXPECT_EQ(rowText(view, 2), QStringLiteral("|hello.wav||||\u25B6||||||||"));

    // A record changed under the list shows its new value when its row repaints.
    view.model()->list().rows()[1].record().decodeSize = "777";
    view.model()->recordsChanged();
    EXPECT_EQ(cell(view, 2, ListColumn::DecodeSize), "777");

    // No project, no rows.
    session.closeProject();
    view.refresh();
    EXPECT_EQ(shown->rowCount(), 0);
}

TEST_F(ViewTest, HeadersSortNamesAsTextAndSizesAsNumbersAndTheChoicePersists)
{
    open({{"b.wav", "B1", "adpcm", "16000", "9", "", "", "", ""},
          {"A.wav", "B1", "adpcm", "5.3K", "100", "", "", "", ""},
          {"c.wav", "B1", "adpcm", "8000", "", "", "", "", ""},
          {"a2.wav", "B1", "adpcm", "32000", "10", "", "", "", ""}});
    settings.sortIndex = 7;
    settings.sortOrder = 1;
    settings.columnScale = 1.5f;
    MainView view(port);
    attach(view);

    // Restored: by encode size, largest first, the empty cell last.
    EXPECT_EQ(columnTexts(view, ListColumn::EncodeSize), (std::vector<QString>{"100", "10", "9", ""}));
    EXPECT_EQ(view.table()->horizontalHeader()->sectionSize(1), 240);
    EXPECT_EQ(view.table()->horizontalHeader()->sectionSize(7), 225);

    view.table()->sortByColumn(static_cast<int>(ListColumn::EncodeSize), Qt::AscendingOrder);
    EXPECT_EQ(columnTexts(view, ListColumn::EncodeSize), (std::vector<QString>{"", "9", "10", "100"}));
    EXPECT_EQ(settings.sortIndex, 7);
    EXPECT_EQ(settings.sortOrder, 0);

    // Text order ignores case; "5.3K" is 5300 bits per second.
    view.table()->sortByColumn(static_cast<int>(ListColumn::FileName), Qt::AscendingOrder);
    EXPECT_EQ(columnTexts(view, ListColumn::FileName), (std::vector<QString>{"A.wav", "a2.wav", "b.wav", "c.wav"}));
    view.table()->sortByColumn(static_cast<int>(ListColumn::BitRate), Qt::DescendingOrder);
    EXPECT_EQ(columnTexts(view, ListColumn::BitRate), (std::vector<QString>{"32000", "16000", "8000", "5.3K"}));
    EXPECT_EQ(settings.sortIndex, 4);
    EXPECT_EQ(settings.sortOrder, 1);

    // Widening one column changes the scale of the whole list.
    view.table()->horizontalHeader()->resizeSection(1, 240 + 100);
    EXPECT_NEAR(settings.columnScale, 1.5f + 100.0f / 1284.0f, 0.01f);
}

TEST_F(ViewTest, DeleteTakesTheSelectedShownRowsAndDeleteAllAsksFirst)
{
    open({{"a.wav", "B1", "adpcm", "8000", "", "", "", "", ""},
          {"a.wav", "B1", "adpcm", "16000", "", "", "", "", ""},
          {"b.wav", "B1", "adpcm", "32000", "", "", "", "", ""}});
    MainView view(port);
    attach(view);
    selectShownRows(view, {0, 2});
    port.queue(Answer::Yes);
    view.deleteSelected();
    EXPECT_EQ(port.texts(), std::vector<std::string>{str(msg::kDeleteSelectedItems)});
    ASSERT_EQ(view.table()->model()->rowCount(), 1);
    EXPECT_EQ(cell(view, 0, ListColumn::BitRate), "16000");
    EXPECT_TRUE(session.document().topLevelFiles()[1]->records().empty());

    port.clear();
    port.queue(Answer::No);
    view.deleteAll();
    EXPECT_EQ(port.texts(), std::vector<std::string>{str(msg::kDeleteAllListItems)});
    EXPECT_EQ(view.table()->model()->rowCount(), 1);
    port.queue(Answer::Yes);
    view.deleteAll();
    EXPECT_EQ(view.table()->model()->rowCount(), 0);
}

// The list follows edits made anywhere in the project, with no call from the
// frame, and keeps the rows that were selected selected by what they are, not
// by where they were.
TEST_F(ViewTest, TheListFollowsTheProjectAndKeepsItsSelectionByRow)
{
    open({{"a.wav", "B1", "adpcm", "8000", "", "", "", "", ""},
          {"a.wav", "B1", "adpcm", "16000", "", "", "", "", ""},
          {"b.wav", "B1", "adpcm", "32000", "", "", "", "", ""}});
    MainView view(port);
    attach(view);
    selectShownRows(view, {2, 1});
    const auto selectedRates = [&view] {
        QStringList rates;
        for (int row = 0; row < view.table()->model()->rowCount(); ++row)
            if (view.table()->selectionModel()->isRowSelected(row))
                rates << cell(view, row, ListColumn::BitRate);
        return rates;
    };

    // A record put before the selected ones moves every row after it.
    ProjectItem* a = session.document().topLevelFiles()[0];
    EditInfoRecord added = a->records().front();
    added.bitRate = "4000";
    a->records().insert(a->records().begin(), added);
    model.treeEdited();
    ASSERT_EQ(view.table()->model()->rowCount(), 4);
    EXPECT_EQ(selectedRates(), QStringList({"16000", "32000"}));
    EXPECT_EQ(view.currentListRow()->record().bitRate, "32000");

    // Rows deleted elsewhere leave the list, and the rest stay selected.
    MainList rows = model.rows();
    rows.selectRows({3});
    port.queue(Answer::Yes);
    ASSERT_TRUE(model.deleteRows(rows, false));
    EXPECT_EQ(columnTexts(view, ListColumn::BitRate), (std::vector<QString>{"4000", "8000", "16000"}));
    EXPECT_EQ(selectedRates(), QStringList({"16000"}));
    EXPECT_FALSE(view.currentListRow().has_value());
}

TEST_F(ViewTest, TenThousandRowsAreServedRowByRowWithoutMeasuring)
{
    open({{"a.wav", "B1", "adpcm", "8000", "0", "", "", "", ""}}, std::string(100000, 'w'));
    ProjectItem* source = session.document().topLevelFiles().front();
    for (int i = 1; i < 10000; ++i) {
        EditInfoRecord record = source->records().front();
        record.encodeSize = std::to_string(i);
        source->records().push_back(record);
    }
    settings.sortIndex = 7;
    settings.sortOrder = 1;
    MainView view(port);
    attach(view);
    view.resize(1200, 700);
    view.show();

    QTableView* table = view.table();
    ASSERT_EQ(table->model()->rowCount(), 10000);
    // Every row is as high as the next: nothing is measured per row.
    EXPECT_EQ(table->verticalHeader()->sectionResizeMode(0), QHeaderView::Fixed);
    EXPECT_EQ(cell(view, 1, ListColumn::EncodeSize), "9998");
    table->scrollToBottom();
    const int bottom = table->rowViewportPosition(9999);
    EXPECT_TRUE(bottom >= 0 && bottom < table->viewport()->height());
    EXPECT_EQ(cell(view, 9999, ListColumn::EncodeSize), "0");
}

TEST_F(ViewTest, PanelsShowTheCurrentRowAndClearWithoutOne)
{
    writeBytes(project / "Files" / "hello.wav", wav16Bytes(std::vector<std::int16_t>(8000), 8000));
    open({{"hello.wav", "B1", "ImaAdpcm", "16000", "4011", "16044", "SAF1.tmp", "SAF1.dfn", ""}});
    MainView view(port);
    attach(view);
    const InfoPanels& panels = *view.panels();
    selectShownRows(view, {0});
    EXPECT_EQ(panels.text(InfoPanels::FileName), "hello.wav");
    EXPECT_EQ(panels.text(InfoPanels::FileSampleRate), "8000 Hz");
    EXPECT_EQ(panels.text(InfoPanels::FileTime), "1000 ms");
    // The project holds no ImaAdpcm library: its name alone, and no message.
    EXPECT_EQ(panels.text(InfoPanels::AlgoName), "ImaAdpcm");
    EXPECT_EQ(panels.text(InfoPanels::EncodeSize), "4011 byte");
    EXPECT_EQ(panels.text(InfoPanels::CompressionRate), "25 %");
    EXPECT_FALSE(panels.valueLabel(InfoPanels::AlgoCreator)->isVisibleTo(view.panels()));
    EXPECT_TRUE(port.texts().empty());

    view.table()->selectionModel()->clearCurrentIndex();
    for (int field = 0; field < InfoPanels::FieldCount; ++field)
        EXPECT_EQ(panels.text(InfoPanels::Field(field)), field == InfoPanels::AlgoVersion ? "1.0.0" : "") << field;
}

TEST_F(ViewTest, EncodeInfoReadsTheEncodedFileAndClearEmptiesTheRowsResults)
{
    // The row's interim file: a header saying 16000 Hz and 100 bytes of speech.
    EncodedHeaderFields header;
    header.sampleRate = 16000;
    const EncodedHeaderBytes head = makeEncodedHeader(header);
    const std::optional<std::string> packed =
        packInterim(std::string(head.begin(), head.end()) + std::string(100, '\x5a'));
    ASSERT_TRUE(packed);
    writeBytes(project / "SAF1.tmp", *packed);
    open({{"hello.wav", "B1", "ImaAdpcm", "16000", "148", "", "SAF1.tmp", "", ""},
          {"hello.wav", "B1", "Pcm", "128000", "", "", "", "", ""}});
    MainView view(port);
    attach(view);

    selectShownRows(view, {0});
    QString sampleRate, speech;
    whenModal<EncodeInfoDialog>([&](EncodeInfoDialog* dialog) {
        sampleRate = fieldText(*dialog, "Sample Rate:");
        speech = fieldText(*dialog, "Speech Data:");
        dialog->reject();
    });
    view.showEncodeInfo();
    EXPECT_EQ(sampleRate, "16000 Hz");
    EXPECT_EQ(speech, "100 byte");
    EXPECT_TRUE(port.texts().empty());

    // Clear asks first: No keeps the results.
    selectShownRows(view, {0, 1});
    port.queue(Answer::No);
    view.clearSelected();
    EXPECT_EQ(cell(view, 0, ListColumn::EncodeSize), "148");
    port.queue(Answer::Yes);
    view.clearSelected();
    EXPECT_EQ(port.texts(), std::vector<std::string>(2, std::string(msg::kClearQuestion)));
    EXPECT_EQ(cell(view, 0, ListColumn::EncodeSize), "");
    EXPECT_EQ(view.panels()->text(InfoPanels::EncodeSize), "");
    EXPECT_TRUE(fs::exists(project / "SAF1.tmp")); // the saved project still names it
}

TEST_F(ViewTest, ExportDialogValuesDriveTheExportOfSelectedOrAllRows)
{
    open({{"hello.wav", "B1", "adpcm", "16000", "10", "", "SAF1.tmp", "", "hello1.bin"},
          {"bye.wav", "B1", "adpcm", "16000", "10", "", "SAF2.tmp", "", "bye.bin"}});
    const EncodedHeaderBytes header = makeEncodedHeader();
    const std::string unpacked1 = std::string(header.begin(), header.end()) + "HELLO";
    const std::string unpacked2 = std::string(header.begin(), header.end()) + "BYE";
    writeBytes(session.tempFolder() / "SAF1.tmp", *packInterim(unpacked1));
    writeBytes(session.tempFolder() / "SAF2.tmp", *packInterim(unpacked2));
    MainView view(port);
    attach(view);
    const fs::path out = temp / "out";

    // Rows shown: bye.wav, hello.wav. Export the selected hello.wav without header.
    selectShownRows(view, {1});
    whenModal<ExportDialog>([&](ExportDialog* dialog) {
        EXPECT_FALSE(dialog->headerBox()->isChecked());
        dialog->pathEdit()->setText(QString::fromStdString(out.string()));
        dialog->accept();
    });
    view.exportSelected();
    EXPECT_EQ(readBytes(out / "hello1.bin"), "HELLO");
    EXPECT_FALSE(fs::exists(out / "bye.bin"));

    // Export all with the header: the dialog opens on the last values; the
    // existing file is asked about.
    whenModal<ExportDialog>([&](ExportDialog* dialog) {
        EXPECT_EQ(dialog->pathEdit()->text().toStdString(), out.string());
        dialog->headerBox()->setChecked(true);
        dialog->accept();
    });
    port.queue(Answer::Yes); // hello1.bin is there already: replace it
    view.exportAll();
    EXPECT_EQ(readBytes(out / "hello1.bin"), unpacked1);
    EXPECT_EQ(readBytes(out / "bye.bin"), unpacked2);

    // Cancel exports nothing.
    fs::remove(out / "bye.bin");
    whenModal<ExportDialog>([](ExportDialog* dialog) { dialog->reject(); });
    view.exportAll();
    EXPECT_FALSE(fs::exists(out / "bye.bin"));

    // A ROM image of both rows, headers kept: the dialog's choice reaches the
    // firmware writer, which sees the bytes the export wrote.
    whenModal<ExportDialog>([&](ExportDialog* dialog) {
        dialog->formatBox()->setCurrentIndex(2);
        dialog->alignmentBox()->setCurrentIndex(dialog->alignmentBox()->findData(16));
        dialog->accept();
    });
    port.queue(Answer::Yes); // hello1.bin again
    view.exportAll();
    const std::string image = readBytes(out / "speech_data.bin");
    ASSERT_EQ(image.substr(0, 4), "KSPD");
    EXPECT_EQ(image.substr(48, unpacked2.size()), unpacked2); // bye.wav is shown first
    EXPECT_EQ(image.substr(112, unpacked1.size()), unpacked1);
}

#ifdef KESTRELON_PROGRAM_DIR
// A real batch with the reference ADPCM codec: its progress reaches the
// view's window with the algorithm's title, and Stop ends the row under way
// (the codec is asked between frames) and the batch: every row keeps what it
// had, no partial file stays, and the status bar says it stopped.
TEST_F(ViewTest, StopInTheProgressWindowEndsTheRowUnderWayAndKeepsEarlierResults)
{
    const fs::path programFolder = KESTRELON_PROGRAM_DIR;
    writeBytes(project / "Files" / "a.wav", wav16Bytes(std::vector<std::int16_t>(160000, 700), 8000));
    writeBytes(project / "Files" / "b.wav", wav16Bytes(std::vector<std::int16_t>(320000, 700), 16000));
    open({{"a.wav", "KS-1 Voice", "ImaAdpcm", "32000", "", "", "", "", ""},
          {"b.wav", "KS-1 Voice", "ImaAdpcm", "32000", "", "", "", "", ""}});
    BodySettings bodies;
    ASSERT_TRUE(bodies.load(programFolder / str(kBodySettingsFileName), programFolder, port));
    const BodyAlgoInfo* adpcm = offeredAlgorithm(bodies, "KS-1 Voice", "ImaAdpcm", "32000");
    ASSERT_NE(adpcm, nullptr);
    ASSERT_TRUE(bringAlgorithmIntoProject(session, model.algorithms(), programFolder, *adpcm, port));
    settings.autoDecode = 0;
    MainView view(port);
    model.setBodies(&bodies);
    attach(view);
    view.selectAll();

    // A row whose recording is not at the codec's rate says so.
    EXPECT_EQ(view.table()->model()->index(0, 1).data(Qt::ToolTipRole).toString(), "");
    EXPECT_EQ(view.table()->model()->index(1, 1).data(Qt::ToolTipRole).toString(),
              "Recorded at 16000 Hz; ImaAdpcm works at 8000 Hz, so it is resampled when encoded.");

    // The frame hears when each batch starts and ends, and what it came to.
    std::vector<bool> busy;
    const Subscription following = model.changed.subscribe([&](const ProjectChange& change) {
        if (change.kind == ProjectChange::Kind::Busy)
            busy.push_back(session.busy());
    });
    QStringList said;
    QObject::connect(&view, &MainView::finished, [&](const QString& what) { said << what; });
    view.encodeSelected();
    const auto& sources = session.document().topLevelFiles();
    const EditInfoRecord first = sources[0]->records()[0];
    ASSERT_FALSE(first.encodeName.empty());
    const auto tempFiles = [&] {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(session.tempFolder()))
            names.insert(entry.path().filename().string());
        return names;
    };
    const std::set<std::string> before = tempFiles();

    // Pressed as soon as the first row's progress lets the window breathe.
    QString title, where;
    QTimer::singleShot(0, [&] {
        title = view.progressDialog()->windowTitle();
        where = view.progressDialog()->batchLine()->text();
        view.progressDialog()->stopButton()->click();
    });
    view.encodeSelected();
    EXPECT_EQ(title, "ImaAdpcm Encoding ......");
    EXPECT_EQ(where, "Encoding 1 of 2: a.wav");
    EXPECT_FALSE(view.progressDialog()->isVisible());
    EXPECT_EQ(busy, (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(sources[0]->records()[0].encodeName, first.encodeName);
    EXPECT_EQ(sources[0]->records()[0].encodeSize, first.encodeSize);
    EXPECT_EQ(cell(view, 0, ListColumn::EncodeSize).toStdString(), first.encodeSize);
    EXPECT_EQ(tempFiles(), before); // nothing half-written stays
    EXPECT_EQ(said, QStringList({"Encoded 2 rows", "Stopped: encoded 0 rows (2 not reached)"}));
    EXPECT_TRUE(port.texts().empty()); // a stop is no failure to report

    // Without a stop decoding fills the decode cells.
    view.decodeSelected();
    EXPECT_FALSE(cell(view, 0, ListColumn::DecodeSize).isEmpty());
    EXPECT_EQ(cell(view, 1, ListColumn::DecodePlay), QStringLiteral("\u25B6"));
    EXPECT_EQ(said.back(), "Decoded 2 rows");
}
#endif
