// What Ghostscript answers: the page sizes and the pixels of the pages.
//
// The child process is left out: this program has its own definitions of the
// classes that run it, which hand over the input instead.

#include "Require.h"

#include "app/settings/RenderSize.h"
#include "fence/ChildFence.h"
#include "process/ChildProcess.h"
#include "process/ProcessOutputHandler.h"
#include "process/ProcessWrapper.h"
#include "process/RunningProcess.h"
#include "render/pdf/ImagePdfRenderer.h"

#include <QByteArray>
#include <QImage>
#include <QTemporaryFile>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

// What the present input makes of Ghostscript.
QByteArray answer;
FuzzedDataProvider* pixels = nullptr;

// Reaches Ghostscript: a file that looks like a PDF.
QTemporaryFile& document()
{
    static QTemporaryFile file;
    if (!file.isOpen() && file.open()) {
        file.write("%PDF-1.4\n");
        file.flush();
    }
    return file;
}

} // namespace

// A child that is still running after its last wait is one of the answers.
ChildProcess::ChildProcess(int output) : m_parentPid(0), m_output(output)
{
    if (pixels->ConsumeBool()) {
        setProcessState(QProcess::Running);
    }
}

ChildProcess::~ChildProcess()
{
    setProcessState(QProcess::NotRunning);
}

void ChildProcess::prepareChild() {}

ProcessWrapper::ProcessWrapper(QProcess& process, int timeoutMs)
    : m_process(process),
      m_timeoutMs(timeoutMs)
{
}

bool ProcessWrapper::executeProcess(const QString& /*program*/, const QStringList& /*arguments*/,
                                    QByteArray* output)
{
    *output = answer;
    return true;
}

RunningProcess::RunningProcess(const QString& /*program*/, const QStringList& /*arguments*/,
                               ProcessOutputHandler* handler, int timeoutMs)
    : m_timeoutMs(timeoutMs),
      m_handler(handler)
{
}

void RunningProcess::receive(std::size_t /*limit*/) {}

bool RunningProcess::read()
{
    constexpr std::size_t maximumSize = 5000;
    while (pixels->remaining_bytes() > 0 && pixels->ConsumeBool()) {
        const auto repetitions = pixels->ConsumeIntegralInRange<std::size_t>(0, maximumSize);
        const QByteArray chunk(static_cast<int>(repetitions), pixels->ConsumeIntegral<char>());
        if (!m_handler->processOutput(chunk)) {
            break;
        }
    }
    return pixels->ConsumeBool();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    const std::string text = input.ConsumeRandomLengthString();
    answer = QByteArray(text.data(), static_cast<int>(text.size()));
    pixels = &input;

    ImagePdfRenderer renderer;
    renderer.setDevice(&document());
    const auto lineCount = answer.count('\n') + answer.count('\r') + 1;
    require(renderer.count() <= static_cast<unsigned long>(lineCount), "no line gives two pages");

    constexpr int maximumSide = 200;
    constexpr unsigned long maximumPages = 20;
    const QSize pageSize(input.ConsumeIntegralInRange(1, maximumSide),
                         input.ConsumeIntegralInRange(1, maximumSide));
    const LogicalDpi dpi{204, input.PickValueInArray<std::uint16_t>({98, 196, 204, 391})};
    for (unsigned long page = 0; page < std::min(renderer.count(), maximumPages); ++page) {
        QImage image;
        if (renderer.render(page, {pageSize, dpi}, image)) {
            require(image.size() == pageSize, "a page has the size that was asked for");
            require(image.format() == QImage::Format_Mono, "a page is bilevel");
        }
    }
    QImage image;
    require(!renderer.render(renderer.count(), {pageSize, dpi}, image),
            "there is no page behind the last");
    return 0;
}
