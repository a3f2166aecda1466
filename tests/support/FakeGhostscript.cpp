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

QByteArray quoted(const QString& path)
{
    return '\'' + QFile::encodeName(path) + '\'';
}

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
    : FakeGhostscript(Answers{answer, answer, {}})
{
}

FakeGhostscript::FakeGhostscript(const QByteArray& commands)
    : m_searchPath(SearchPath::withFirst(m_folder.qPath(QString())))
{
    const QByteArray record = quoted(m_folder.qPath(recordFile));
    m_folder.write("gs",
                   "#!/bin/sh\n{ [ $# -eq 0 ] || printf '%s\\000' \"$@\"; printf '\\001'; } >>" +
                       record + '\n' + noteOverlap() + commands + '\n');
    EXPECT_TRUE(QFile::setPermissions(m_folder.qPath(QStringLiteral("gs")),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

// A run that has ended, or was killed and waited for, has no process any more.
QByteArray FakeGhostscript::noteOverlap() const
{
    const QByteArray process = quoted(m_folder.qPath(processFile));
    const QByteArray overlaps = quoted(m_folder.qPath(overlapFile));
    return "read before 2>&- <" + process + " && kill -0 \"$before\" 2>&- && echo >>" + overlaps +
           "\necho $$ >" + process + '\n';
}

QByteArray FakeGhostscript::realGhostscript()
{
    const QString program = QStandardPaths::findExecutable(QStringLiteral("gs"));
    EXPECT_FALSE(program.isEmpty()) << "Ghostscript is not installed";
    return "exec " + quoted(program) + " \"$@\"";
}

QByteArray FakeGhostscript::numberedPages(const QByteArray& answer)
{
    return R"sh(
for argument in "$@"; do
  case $argument in
    -c) printf '%s' ')sh" +
           answer + R"sh('; exit ;;
    -dFirstPage=*) page=${argument#*=} ;;
    -dLastPage=*) last=${argument#*=} ;;
    -g*) size=${argument#-g} ;;
  esac
done
bytes=$(((${size%x*} + 7) / 8 * ${size#*x}))
while [ "$page" -le "$last" ]; do
  head -c "$bytes" /dev/zero | tr '\000' "\\$(printf '%03o' "$page")"
  page=$((page + 1))
done
)sh";
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
    return file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0;
}
