#pragma once
// The user manual, read inside the program: the HTML pages made from docs/
// at build time, with their links and pictures, Back and Contents.
#include <QWidget>

#include <filesystem>

class QTextBrowser;

namespace kestrelon {

class ManualWindow : public QWidget {
    Q_OBJECT
public:
    // `index` is the manual's first page; the others lie beside it.
    explicit ManualWindow(const std::filesystem::path& index, QWidget* parent = nullptr);

    QTextBrowser* browser() const { return m_browser; }

private:
    QTextBrowser* m_browser;
};

} // namespace kestrelon
