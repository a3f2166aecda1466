#include "fence/InterpreterLocation.h"

#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <cstring>
#include <optional>
#include <utility>

#include <elf.h>

namespace {

std::string resolved(const QString& path)
{
    return QFile::encodeName(QFileInfo(path).canonicalFilePath()).toStdString();
}

// The program header and the name of the loader stand at the start of the file.
constexpr qint64 startBytes = 4096;

// A record of the file, all zero if it lies beyond what was read.
template <typename Record>
Record recordAt(const QByteArray& start, quint64 offset)
{
    Record record = {};
    if (offset <= startBytes && offset + sizeof record <= static_cast<quint64>(start.size())) {
        std::memcpy(&record, start.constData() + offset, sizeof record);
    }
    return record;
}

bool isElf(const QByteArray& start)
{
    return start.startsWith(ELFMAG) && start.size() > EI_CLASS && start[EI_CLASS] == ELFCLASS64;
}

QString loaderOf(const QByteArray& start)
{
    const auto header = recordAt<Elf64_Ehdr>(start, 0);
    for (quint64 i = 0; i < header.e_phnum; ++i) {
        const auto segment = recordAt<Elf64_Phdr>(start, header.e_phoff + i * sizeof(Elf64_Phdr));
        if (segment.p_type == PT_INTERP && segment.p_offset < startBytes) {
            return QFile::decodeName(start.mid(static_cast<int>(segment.p_offset)).constData());
        }
    }
    return QString();
}

} // namespace

InterpreterLocation::InterpreterLocation(const QString& program, const QStringList& systemFolders)
    : m_path(resolved(QStandardPaths::findExecutable(program)))
{
    const QString path = QFile::decodeName(m_path.c_str());
    const bool isInSystem =
        std::any_of(systemFolders.begin(), systemFolders.end(), [&path](const QString& folder) {
            return path.startsWith(folder + QLatin1Char('/'));
        });
    QFile file(path);
    if (!isInSystem || !file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return;
    }
    const QByteArray start = file.read(startBytes);
    m_isInstalled = isElf(start);
    m_loader = m_isInstalled ? resolved(loaderOf(start)) : std::string();
}

const InterpreterLocation& InterpreterLocation::known(const QString& program)
{
    static std::pair<QString, QByteArray> answered;
    static std::optional<InterpreterLocation> answer;
    const std::pair<QString, QByteArray> question(program, qgetenv("PATH"));
    if (!answer || answer->m_path.empty() || answered != question) {
        answer.emplace(program);
        answered = question;
    }
    return *answer;
}

QStringList InterpreterLocation::installationFolders()
{
    QStringList folders;
    for (const char* name : {"bin", "sbin", "lib", "lib32", "lib64", "libexec"}) {
        folders << QStringLiteral("/usr/") + QLatin1String(name)
                << QLatin1Char('/') + QLatin1String(name);
    }
    return folders;
}
