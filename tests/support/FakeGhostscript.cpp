#include "support/FakeGhostscript.h"

#include <QFile>
#include <QStandardPaths>

#include <gtest/gtest.h>

namespace {

// An argument may hold anything but a null byte.
const QString recordFile = QStringLiteral("arguments");
const QString processFile = QStringLiteral("process");
const QString overlapFile = QStringLiteral("overlaps");
constexpr char endOfArgument = '\0';
constexpr char endOfRun = '\1';

} // namespace

FakeGhostscript::FakeGhostscript(const Answers& answers)
    : m_realGhostscript(QStandardPaths::findExecutable(QStringLiteral("gs"))),
      m_searchPath(SearchPath::withFirst(m_folder.qPath(QString())))
{
    const GhostscriptAnswer steps =
        GhostscriptAnswer::recordArguments(m_folder.qPath(recordFile)) +
        GhostscriptAnswer::recordProcess(m_folder.qPath(processFile), m_folder.qPath(overlapFile)) +
        GhostscriptAnswer::choice(answers.query, answers.run, answers.runsFrom);
    m_folder.write("gs", steps.script(m_realGhostscript));
    EXPECT_TRUE(QFile::setPermissions(m_folder.qPath(QStringLiteral("gs")),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

FakeGhostscript::FakeGhostscript(const GhostscriptAnswer& answer)
    : FakeGhostscript(Answers(answer, answer))
{
}

std::vector<QStringList> FakeGhostscript::runs() const
{
    QFile file(m_folder.qPath(recordFile));
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    std::vector<QStringList> runs;
    QStringList arguments;
    QByteArray argument;
    for (const char byte : file.readAll()) {
        if (byte == endOfRun) {
            runs.push_back(arguments);
            arguments.clear();
        } else if (byte == endOfArgument) {
            arguments << QString::fromUtf8(argument);
            argument.clear();
        } else {
            argument += byte;
        }
    }
    return runs;
}

QStringList FakeGhostscript::renderedRanges() const
{
    QStringList ranges;
    for (const QStringList& arguments : runs()) {
        QStringList words;
        for (const QString& argument : arguments) {
            if (argument.startsWith(QStringLiteral("-dFirstPage=")) ||
                argument.startsWith(QStringLiteral("-dLastPage=")) ||
                argument.startsWith(QStringLiteral("-g"))) {
                words << argument;
            }
        }
        if (!words.isEmpty()) {
            ranges << words.join(QLatin1Char(' '));
        }
    }
    return ranges;
}

pid_t FakeGhostscript::lastProcess() const
{
    QFile file(m_folder.qPath(processFile));
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed().toInt() : 0;
}

int FakeGhostscript::overlaps() const
{
    QFile file(m_folder.qPath(overlapFile));
    return file.open(QIODevice::ReadOnly) ? static_cast<int>(file.readAll().count('\n')) : 0;
}
