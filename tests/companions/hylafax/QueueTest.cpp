#include "companions/hylafax/QueueTest.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <sys/stat.h>
#include <unistd.h>

#include <stdexcept>

namespace {

constexpr int rejected = 254;

std::string nameOf(DocumentKind kind)
{
    switch (kind) {
    case DocumentKind::PostScript:
        return "morvaltide-ps2fax";
    case DocumentKind::Pdf:
        return "morvaltide-pdf2fax";
    case DocumentKind::Tiff:
        return "morvaltide-tiff2fax";
    }
    throw std::logic_error("no such kind");
}

std::string searchPath()
{
    const std::string program = MORVALTIDE_PROGRAM;
    return program.substr(0, program.rfind('/')) + ":/usr/bin:/bin:/usr/sbin";
}

testing::AssertionResult endedWith(const ProgramResult& result, int exitStatus,
                                   const std::string& error)
{
    if (result.exitStatus == exitStatus && result.signal == 0 && result.output.empty() &&
        result.error == error) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure()
           << "exit status " << result.exitStatus << ", signal " << result.signal << ", output \""
           << result.output << "\", error \"" << result.error << '"';
}

} // namespace

QueueTest::QueueTest()
{
    for (const char* name : {"docq", "tmp", "etc", "bin", "lib"}) {
        QDir().mkdir(QString::fromStdString(path(name)));
    }
    QFile::copy(QStringLiteral(MORVALTIDE_HYLAFAX),
                QString::fromStdString(path("lib/morvaltide-ps2fax")));
    for (const char* name : {"lib/morvaltide-pdf2fax", "lib/morvaltide-tiff2fax"}) {
        QFile::link(QStringLiteral("morvaltide-ps2fax"), QString::fromStdString(path(name)));
    }
}

void QueueTest::write(const std::string& name, const QByteArray& content) const
{
    m_spool.write(name, content);
}

void QueueTest::submit(const QByteArray& content) const
{
    write(document, content);
}

ProgramStart QueueTest::start(const QueueRequest& request) const
{
    write(output, {});
    chmod(path(output).c_str(), S_IRUSR | S_IWUSR);
    ProgramStart start;
    start.program = path("lib/" + nameOf(request.kind));
    start.arguments = {"-o",    output,         "-r", request.resolution,   "-w", request.width,
                       "-l",    request.length, "-m", request.maximumPages, "-U", request.format,
                       document};
    start.folder = path(".");
    start.environment["PATH"] = searchPath();
    return start;
}

ProgramResult QueueTest::run(const QueueRequest& request) const
{
    return runProgram(start(request));
}

std::vector<TiffPage> QueueTest::pages() const
{
    return readTiff(path(output));
}

std::vector<TiffPage> QueueTest::directPages(const std::string& fileName, const QByteArray& content,
                                             const std::vector<std::string>& options) const
{
    ProgramStart start;
    start.program = MORVALTIDE_PROGRAM;
    start.arguments = options;
    start.arguments.insert(start.arguments.end(),
                           {"-o", m_direct.path("out.tif"), m_direct.write(fileName, content)});
    const ProgramResult result = runProgram(start);
    EXPECT_EQ(result.exitStatus, 0) << result.error;
    return readTiff(m_direct.path("out.tif"));
}

QByteArray QueueTest::outputContent() const
{
    QFile file(QString::fromStdString(path(output)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
}

QStringList QueueTest::entries(const std::string& folderName) const
{
    return QDir(QString::fromStdString(path(folderName)))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                   QDir::Name);
}

bool hasTiffcheck()
{
    return !QStandardPaths::findExecutable(QStringLiteral("tiffcheck"),
                                           {QStringLiteral("/usr/sbin")})
                .isEmpty();
}

testing::AssertionResult isQueueSuccess(const ProgramResult& result)
{
    return endedWith(result, 0, "");
}

testing::AssertionResult isRejected(const ProgramResult& result, const std::string& message)
{
    return endedWith(result, rejected, message + '\n');
}
