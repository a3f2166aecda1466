#include "render/pdf/GhostScriptCommand.h"

#include "app/settings/RenderSize.h"
#include "process/EnvironmentChange.h"
#include "process/FencedDocument.h"
#include "process/ProcessWrapper.h"
#include "process/RunningProcess.h"
#include "render/pdf/GhostScriptFileName.h"
#include "render/pdf/PdfSignature.h"

#include <QStringList>
#include <QTextStream>

namespace {

QString program()
{
    return QStringLiteral("gs");
}

// Besides its command line, Ghostscript reads options from this variable.
constexpr char optionsVariable[] = "GS_OPTIONS";

// The options of the user, and behind them the one by which Ghostscript says what
// it has to say, about damaged pages for example, on standard error. It would say
// it on standard output, in the middle of the pixels. The blank ends a backslash
// in front of it, the line feed a comment.
QByteArray renderingOptions()
{
    const QByteArray ofUser = qgetenv(optionsVariable);
    const QByteArray own = "-sstdout=%stderr";
    return ofUser.isEmpty() ? own : ofUser + " \n" + own;
}

QSizeF pageSizeFromLine(const QString& line)
{
    const QStringList parts = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    constexpr int cornerCount = 4;
    if (parts.size() != cornerCount) {
        return QSizeF();
    }
    double corners[cornerCount];
    for (int i = 0; i < cornerCount; ++i) {
        bool ok = false;
        corners[i] = parts[i].toDouble(&ok);
        if (!ok) {
            return QSizeF();
        }
    }
    return {corners[2] - corners[0], corners[3] - corners[1]};
}

} // namespace

GhostScriptCommand::GhostScriptCommand(const QString& fileName) : m_fileName(fileName) {}

std::vector<QSizeF> GhostScriptCommand::getPageSizes() const
{
    const QByteArray answer =
        query(QStringLiteral("(%1) (r) file runpdfbegin 1 1 pdfpagecount {pdfgetpage /MediaBox get "
                             "{=print ( ) print} forall (\n) print} for quit"));
    std::vector<QSizeF> sizes;
    QTextStream lines(answer, QIODevice::ReadOnly);
    while (!lines.atEnd()) {
        const QString line = lines.readLine().trimmed();
        if (!line.isEmpty()) {
            sizes.push_back(pageSizeFromLine(line));
        }
    }
    return sizes;
}

unsigned long GhostScriptCommand::getPageCount() const
{
    return query(QStringLiteral("(%1) (r) file runpdfbegin pdfpagecount = quit"))
        .trimmed()
        .toULong();
}

QByteArray GhostScriptCommand::query(const QString& postScript) const
{
    if (!isSafe()) {
        return QByteArray();
    }
    // The query opens the file by name, which only -dNOSAFER allows.
    const QStringList arguments = {QStringLiteral("-q"),
                                   QStringLiteral("-dBATCH"),
                                   QStringLiteral("-dNODISPLAY"),
                                   QStringLiteral("-dNOPAUSE"),
                                   QStringLiteral("-dNOSAFER"),
                                   QStringLiteral("-c"),
                                   postScript.arg(GhostScriptFileName(m_fileName).argument())};
    QByteArray answer;
    const FencedDocument document(program(), m_fileName);
    ProcessWrapper::executeProcess(program(), arguments, &answer);
    return answer;
}

bool GhostScriptCommand::renderPages(unsigned long firstPage, unsigned long lastPage,
                                     const RenderSize& size, const QString& outputDevice,
                                     ProcessOutputHandler* handler) const
{
    const auto run = startPages(firstPage, lastPage, size, outputDevice, handler);
    return run && run->read();
}

std::unique_ptr<RunningProcess> GhostScriptCommand::startPages(unsigned long firstPage,
                                                               unsigned long lastPage,
                                                               const RenderSize& size,
                                                               const QString& outputDevice,
                                                               ProcessOutputHandler* handler) const
{
    if (!isSafe()) {
        return nullptr;
    }
    QStringList arguments = {QStringLiteral("-q"),
                             QStringLiteral("-dBATCH"),
                             QStringLiteral("-dSAFER"),
                             QStringLiteral("-dNOPAUSE"),
                             QStringLiteral("-dFIXEDMEDIA"),
                             QStringLiteral("-dPDFFitPage"),
                             QStringLiteral("-sDEVICE=") + outputDevice,
                             QStringLiteral("-dFirstPage=%1").arg(firstPage),
                             QStringLiteral("-dLastPage=%1").arg(lastPage)};
    const auto& [horizontalDpi, verticalDpi] = size.dpi;
    if (horizontalDpi != 0 && verticalDpi != 0) {
        arguments << QStringLiteral("-r%1x%2").arg(horizontalDpi).arg(verticalDpi);
    }
    if (!size.size.isEmpty()) {
        arguments << QStringLiteral("-g%1x%2").arg(size.size.width()).arg(size.size.height());
    }
    arguments << QStringLiteral("-sOutputFile=-") << GhostScriptFileName(m_fileName).argument();
    const FencedDocument document(program(), m_fileName);
    const EnvironmentChange options(optionsVariable, renderingOptions());
    return options.isInForce() ? std::make_unique<RunningProcess>(program(), arguments, handler)
                               : nullptr;
}

bool GhostScriptCommand::isSafe() const
{
    return GhostScriptFileName(m_fileName).isLiteral() && PdfSignature::isPdfFile(m_fileName);
}
