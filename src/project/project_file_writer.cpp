#include "project/project_file_writer.h"

#include "common/file_io.h"
#include "project/project_document.h"
#include "project/project_file_keywords.h"

#include <charconv>

namespace kestrelon {

namespace {

enum class Form { Files, Algorithms };

class Writer {
public:
    std::string take() { return std::move(m_out); }

    void line(std::string_view text)
    {
        m_out.append(text);
        m_out.append(kNativeEol);
    }

    void keyLine(std::string_view key, std::string_view value)
    {
        m_out.append(key);
        line(value);
    }

    void hexLine(std::string_view key, std::uint32_t value)
    {
        char digits[8];
        const auto end = std::to_chars(digits, digits + sizeof digits, value, 16).ptr;
        keyLine(key, std::string_view(digits, std::size_t(end - digits)));
    }

    void section(std::string_view begin, std::string_view end, const std::vector<ProjectItem*>& items, Form form)
    {
        line(begin);
        for (const ProjectItem* item : items)
            if (item->isTopLevel())
                subtree(*item, form);
        line(end);
    }

private:
    // Parent before children, without recursion: a tree read from a file may
    // be as deep as the file is long.
    void subtree(const ProjectItem& root, Form form)
    {
        struct Frame {
            const ProjectItem* item;
            std::size_t nextChild;
        };
        std::vector<Frame> stack{{&root, 0}};
        opening(root, form);
        while (!stack.empty()) {
            Frame& top = stack.back();
            if (top.nextChild < top.item->children().size()) {
                const ProjectItem* child = top.item->children()[top.nextChild++];
                opening(*child, form);
                stack.push_back({child, 0});
            } else {
                closing(*top.item);
                stack.pop_back();
            }
        }
    }

    void opening(const ProjectItem& item, Form form)
    {
        if (item.isGroup()) {
            std::string head(ptp::kBeginGroup);
            head.append(" \"").append(item.name()).append("\"");
            line(head);
            keyLine(ptp::kId, item.id());
            hexLine(ptp::kParam, item.flags());
        } else if (item.isSource()) {
            line(ptp::kBeginSourceFile);
            keyLine(ptp::kSource, item.name());
            keyLine(ptp::kId, item.id());
            hexLine(ptp::kParam, item.flags());
            for (const EditInfoRecord& record : item.records())
                editInfo(record, form);
        }
    }

    void closing(const ProjectItem& item)
    {
        if (item.isGroup())
            line(ptp::kEndGroup);
        else if (item.isSource())
            line(ptp::kEndSourceFile);
    }

    // The two forms differ in the first line only: the Files tree keeps the
    // algorithm name, the Algorithms tree the record's file name.
    void editInfo(const EditInfoRecord& record, Form form)
    {
        line(ptp::kBeginEditInfo);
        if (form == Form::Files)
            keyLine(ptp::kAlgoName, record.algoName);
        else
            keyLine(ptp::kFileName, record.fileName);
        keyLine(ptp::kBodyName, record.bodyName);
        keyLine(ptp::kEncodeName, record.encodeName);
        keyLine(ptp::kEncodeSize, record.encodeSize);
        keyLine(ptp::kRenameEncode, record.renameEncode);
        keyLine(ptp::kDecodeName, record.decodeName);
        keyLine(ptp::kDecodeSize, record.decodeSize);
        keyLine(ptp::kEncodeBitRate, record.bitRate);
        keyLine(ptp::kMultiSelect, std::to_string(record.multiSelect));
        line(ptp::kEndEditInfo);
    }

    std::string m_out;
};

} // namespace

std::string writeProjectFile(const ProjectDocument& project)
{
    Writer out;
    out.line(ptp::kBeginProject);
    out.line("");
    out.section(ptp::kBeginFiles, ptp::kEndFiles, project.files(), Form::Files);
    out.line("");
    out.section(ptp::kBeginAlgorithms, ptp::kEndAlgorithms, project.algorithms(), Form::Algorithms);
    out.line("");
    out.line(ptp::kEndProject);
    return out.take();
}

} // namespace kestrelon
