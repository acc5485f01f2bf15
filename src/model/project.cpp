#include "model/project.h"

#include "codec/engine_world.h"
#include "common/messages.h"
#include "common/paths.h"
#include "common/user_port.h"

namespace kestrelon {

Project::Project(UserPort& port, Places places, RecentProjects* recent)
    : m_port(port)
    , m_places(std::move(places))
    , m_companions(port)
    , m_session(port, &m_companions, recent, m_places.home.empty() ? m_places.program : m_places.home)
{
    m_sessionHeard = m_session.changed.subscribe([this](SessionChange change) { heard(change); });
}

Project::~Project() = default;

void Project::heard(SessionChange change)
{
    switch (change) {
    case SessionChange::Opened:
    case SessionChange::Closed: {
        // Another project's measures, or the same file as it may be now.
        m_quality = QualityFile();
        // The views let go of the old tree when they hear of the new one.
        const std::unique_ptr<WorkspaceTree> previous = std::move(m_tree);
        const bool opened = change == SessionChange::Opened;
        if (opened) {
            m_tree = std::make_unique<WorkspaceTree>(m_session.document(), m_session.projectFolder(),
                                                     m_session.deletionList(), m_port);
            m_tree->onChanged = [this] { treeEdited(); };
            m_tree->setCopyRecord(&m_session.copiedIn());
        }
        changed.publish({opened ? ProjectChange::Kind::Opened : ProjectChange::Kind::Closed, {}});
        break;
    }
    case SessionChange::Saved: changed.publish({ProjectChange::Kind::Saved, {}}); break;
    case SessionChange::Busy: changed.publish({ProjectChange::Kind::Busy, {}}); break;
    }
}

QualityFile& Project::quality()
{
    if (m_session.isOpen() && m_quality.path() != qualityFileOf(m_session.projectFile()))
        m_quality.load(m_session.projectFile());
    return m_quality;
}

MainList Project::rows()
{
    return m_session.isOpen() ? MainList::fromDocument(m_session.document()) : MainList();
}

bool Project::withEngine(UserPort& port, bool measuring, const EngineWork& work)
{
    if (!m_bodies || !m_session.isOpen())
        return false;
    // Busy from the first batch to the last, and the views told once.
    const BusyScope busy(m_session);
    {
        // The codec goes, and what broke is kept, before anyone hears of the rows.
        const EngineWorld world({m_session, algorithms(), *m_bodies, port, m_places.program, m_places.config, m_codec,
                                 measuring ? &quality() : nullptr});
        work(world.environment());
    }
    if (measuring && !m_quality.save())
        port.showMessage(utf8FromPath(m_quality.path()) + std::string(msg::kQualityNotWritten));
    return true;
}

namespace {

bool addedAny(const AddEncodeResult& added)
{
    for (const AddedSource& source : added.sources)
        if (source.outcome == SourceOutcome::Added || source.outcome == SourceOutcome::Replaced)
            return true;
    return false;
}

} // namespace

BatchResult Project::encode(MainList& rows, bool decodeToo, UserPort& port)
{
    BatchResult batch;
    if (rows.selectedCount() == 0 || !m_bodies || !m_session.isOpen())
        return batch;
    withEngine(port, decodeToo, [&](const EngineEnvironment& environment) {
        batch = CodecEngine(environment).encodeSelected(rows, decodeToo);
    });
    rowsEdited(rows.selectedKeys());
    return batch;
}

BatchResult Project::decode(MainList& rows, UserPort& port)
{
    BatchResult batch;
    if (rows.selectedCount() == 0 || !m_bodies || !m_session.isOpen())
        return batch;
    withEngine(port, true,
               [&](const EngineEnvironment& environment) { batch = CodecEngine(environment).decodeSelected(rows); });
    rowsEdited(rows.selectedKeys());
    return batch;
}

AddEncodeResult Project::addEncodeData(const std::vector<ProjectItem*>& sources, EncodeSettingChooser& chooser,
                                       LastEncodeSetting& last, bool decodeToo, UserPort& port)
{
    AddEncodeResult added;
    withEngine(port, decodeToo, [&](const EngineEnvironment& environment) {
        added = kestrelon::addEncodeData(environment, sources, chooser, last, decodeToo);
    });
    if (addedAny(added))
        treeEdited();
    return added;
}

AddEncodeResult Project::duplicate(const MainList& rows, EncodeSettingChooser& chooser, LastEncodeSetting& last,
                                   bool decodeToo, UserPort& port)
{
    AddEncodeResult added;
    withEngine(port, decodeToo, [&](const EngineEnvironment& environment) {
        added = duplicateRows(environment, rows, chooser, last, decodeToo);
    });
    if (addedAny(added))
        treeEdited();
    return added;
}

bool Project::deleteRows(MainList& rows, bool all)
{
    const bool deleted = all ? rows.deleteAll(m_port, m_session) : rows.deleteSelected(m_port, m_session);
    if (deleted)
        treeEdited();
    return deleted;
}

std::size_t Project::clearRows(MainList& rows)
{
    const std::size_t cleared = rows.clearSelectedResults(m_session);
    if (cleared > 0)
        rowsEdited(rows.selectedKeys());
    return cleared;
}

ExportResult Project::exportRows(const MainList& rows, const ExportOptions& options, ExportKind kind,
                                 const FirmwareOptions& firmware, UserPort& port) const
{
    ExportResult result;
    result.rows = kestrelon::exportRows(m_session, rows, options, kind, port);
    if (!result.rows.indexFile.empty())
        result.firmware = writeFirmwareFiles(result.rows.indexFile.parent_path(), result.rows.files, options.addHeader,
                                             firmware, port);
    return result;
}

} // namespace kestrelon
