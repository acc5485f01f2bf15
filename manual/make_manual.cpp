// Builds the user manual: each Markdown page of docs/ as an HTML page in the
// output folder, links between pages kept, the pictures copied beside them.
// docs/manual.md becomes index.html, the page F1 opens.
//
//     kestrelon-make-manual OUTDIR PAGE.md...
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTextDocument>

#include <cstdio>

namespace {

QString pageName(const QFileInfo& markdown)
{
    return markdown.baseName() == QLatin1String("manual") ? QStringLiteral("index.html")
                                                          : markdown.baseName() + QStringLiteral(".html");
}

bool writePage(const QFileInfo& markdown, const QDir& out)
{
    QFile in(markdown.filePath());
    if (!in.open(QIODevice::ReadOnly)) {
        std::fprintf(stderr, "kestrelon-make-manual: cannot read %s\n", qPrintable(markdown.filePath()));
        return false;
    }
    QTextDocument document;
    document.setMarkdown(QString::fromUtf8(in.readAll()));
    QString html = document.toHtml();
    // Pages link to each other as Markdown files; the manual has them as HTML.
    html.replace(QRegularExpression(QStringLiteral("href=\"([A-Za-z0-9_-]+)\\.md\"")),
                 QStringLiteral("href=\"\\1.html\""));
    html.replace(QStringLiteral("href=\"manual.html\""), QStringLiteral("href=\"index.html\""));
    // Screenshots are wider than a reading window: shown at a width that fits.
    html.replace(QStringLiteral("<img src="), QStringLiteral("<img width=\"720\" src="));
    if (markdown.baseName() != QLatin1String("manual"))
        html.replace(QRegularExpression(QStringLiteral("(<body[^>]*>)")),
                     QStringLiteral("\\1<p><a href=\"index.html\">Kestrelon user manual</a></p>"));
    QSaveFile page(out.filePath(pageName(markdown)));
    if (!page.open(QIODevice::WriteOnly) || page.write(html.toUtf8()) < 0 || !page.commit()) {
        std::fprintf(stderr, "kestrelon-make-manual: cannot write %s\n", qPrintable(page.fileName()));
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    // Fonts need a GUI application; no screen is needed to lay out text.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication application(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: kestrelon-make-manual OUTDIR PAGE.md...\n");
        return 2;
    }
    QDir out(QString::fromLocal8Bit(argv[1]));
    if (!out.mkpath(QStringLiteral("."))) {
        std::fprintf(stderr, "kestrelon-make-manual: cannot make %s\n", argv[1]);
        return 1;
    }
    bool ok = true;
    for (int i = 2; i < argc; ++i) {
        const QFileInfo markdown(QString::fromLocal8Bit(argv[i]));
        ok = writePage(markdown, out) && ok;
        // The pictures the pages show lie beside them in docs/.
        for (const QFileInfo& picture : markdown.dir().entryInfoList({QStringLiteral("*.png")}, QDir::Files)) {
            const QString target = out.filePath(picture.fileName());
            QFile::remove(target);
            ok = QFile::copy(picture.filePath(), target) && ok;
        }
    }
    return ok ? 0 : 1;
}
