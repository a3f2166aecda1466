#include "CliTest.h"

#include "support/SampleImages.h"

#include <QFile>
#include <QPainter>

#include <fstream>
#include <iterator>

#include <sys/stat.h>
#include <unistd.h>

namespace {

testing::AssertionResult failure(const ProgramResult& result)
{
    return testing::AssertionFailure() << "exit status " << result.exitStatus << ", signal "
                                       << result.signal << ", standard output \"" << result.output
                                       << "\", standard error \"" << result.error << '"';
}

bool hasFailedSilently(const ProgramResult& result)
{
    return result.exitStatus == 1 && result.output.empty();
}

} // namespace

ProgramStart CliTest::start(const std::vector<std::string>& arguments) const
{
    ProgramStart start;
    start.program = testedProgram(MORVALTIDE_PROGRAM);
    start.arguments = arguments;
    start.folder = m_folder.path("");
    // The tests set it for themselves; the program has to do that on its own.
    start.environment["QT_QPA_PLATFORM"] = std::nullopt;
    return start;
}

ProgramResult CliTest::run(const std::vector<std::string>& arguments) const
{
    return runProgram(start(arguments));
}

QByteArray CliTest::content(const std::string& fileName) const
{
    std::ifstream file(m_folder.path(fileName), std::ios::binary);
    EXPECT_TRUE(file.is_open()) << fileName;
    return QByteArray::fromStdString(
        std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
}

bool CliTest::exists(const std::string& fileName) const
{
    struct stat info = {};
    return lstat(m_folder.path(fileName).c_str(), &info) == 0;
}

std::vector<TiffPage> CliTest::pages(const std::string& fileName) const
{
    return readTiff(m_folder.path(fileName));
}

void CliTest::link(const std::string& target, const std::string& fileName) const
{
    EXPECT_EQ(symlink(target.c_str(), m_folder.path(fileName).c_str()), 0);
}

QByteArray blackPng(const QSize& size)
{
    QImage image(size, QImage::Format_Mono);
    image.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    image.fill(0);
    return SampleImages::pngFile(image);
}

QImage pageWith(const QSize& pageSize, const QRect& black)
{
    QImage page(pageSize, QImage::Format_RGB32);
    page.fill(Qt::white);
    QPainter(&page).fillRect(black, Qt::black);
    return page.convertToFormat(QImage::Format_Mono, Qt::MonoOnly);
}

testing::AssertionResult isSilentSuccess(const ProgramResult& result)
{
    const bool isTrue = result.exitStatus == 0 && result.output.empty() && result.error.empty();
    return isTrue ? testing::AssertionSuccess() : failure(result);
}

testing::AssertionResult isFailure(const ProgramResult& result, const std::string& error)
{
    const bool isTrue = hasFailedSilently(result) && result.error == error;
    return isTrue ? testing::AssertionSuccess() : failure(result);
}

testing::AssertionResult isFailureAfterRemarks(const ProgramResult& result,
                                               const std::string& lastLine)
{
    const std::string::size_type end = result.error.rfind('\n', result.error.size() - 2);
    const bool isTrue = hasFailedSilently(result) && end != std::string::npos &&
                        result.error.substr(end + 1) == lastLine;
    return isTrue ? testing::AssertionSuccess() : failure(result);
}
