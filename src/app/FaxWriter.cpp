#include "app/FaxWriter.h"

#include "fax/FaxOutputWriter.h"
#include "fax/output/FaxTiffWriter.h"
#include "fence/InterpreterLocation.h"
#include "fence/ParentFence.h"
#include "fence/PrivateFolder.h"
#include "files/FileName.h"
#include "files/OutputFileGuard.h"
#include "files/OutputFileLock.h"
#include "files/OutputFileName.h"

#include <QFile>

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <optional>

#include <sys/stat.h>

namespace {

bool isFile(const char* fileName, const struct stat& file)
{
    struct stat info = {};
    return stat(fileName, &info) == 0 && OutputFileName::isSameFile(info, file);
}

// The result of a conversion that ends with these words.
bool cannotOpen(const std::string& outputFile)
{
    fmt::print(stderr, "can't open file '{}'\n", outputFile);
    return false;
}

} // namespace

FaxWriter::FaxWriter(const FaxConfiguration& configuration) : m_configuration(configuration) {}

void FaxWriter::setCoverPage(const std::string& fileName)
{
    m_coverPage = fileName;
}

void FaxWriter::setFiles(const std::vector<std::string>& fileNames)
{
    m_files = fileNames;
}

bool FaxWriter::write(const std::string& outputFile) const
{
    if (outputFile.empty() || m_files.empty()) {
        return false;
    }
    if (isInput(outputFile)) {
        return cannotOpen(outputFile);
    }

    FaxTiffWriter tiffWriter;
    // Released last: a file that failed is removed before another may have it.
    OutputFileLock lock(outputFile);
    OutputFileGuard guard(outputFile, PrivateFolder::removeExisting);
    if (!lock.acquire()) {
        guard.notOpened();
        return cannotOpen(outputFile);
    }
    if (!tiffWriter.open(outputFile)) {
        guard.failedToOpen();
        return cannotOpen(outputFile);
    }
    guard.opened(tiffWriter.fileDescriptor());
    std::optional<ParentFence> fence;
    if (m_isFenced) {
        // The only program that the conversion starts.
        fence.emplace(InterpreterLocation::known(QStringLiteral("gs")), outputFile);
    }

    if (!writePages(tiffWriter)) {
        return false;
    }
    const bool isInPlace = guard.isInPlace();
    tiffWriter.close();
    if (!isInPlace || !tiffWriter.isComplete()) {
        fmt::print(stderr, "can't write file '{}'\n", outputFile);
        return false;
    }
    guard.keep();
    return true;
}

// True if writing the output would destroy an input file or the cover page.
bool FaxWriter::isInput(const std::string& outputFile) const
{
    struct stat output = {};
    if (stat(outputFile.c_str(), &output) != 0) {
        return false;
    }
    const auto isOutput = [&output](const std::string& fileName) {
        // Opened under its decoded name, which is another if it is not UTF-8.
        const QByteArray openedName = QFile::encodeName(FileName::fromUtf8(fileName));
        return isFile(fileName.c_str(), output) || isFile(openedName.constData(), output);
    };
    return isOutput(m_coverPage) || std::any_of(m_files.begin(), m_files.end(), isOutput);
}

bool FaxWriter::writePages(FaxTiffWriter& tiffWriter) const
{
    FaxOutputWriter outputWriter(&tiffWriter, m_configuration);
    if (!m_coverPage.empty() && !outputWriter.writeCoverPage(m_coverPage)) {
        fmt::print(stderr, "can't write cover page file '{}', {}\n", m_coverPage,
                   outputWriter.lastError().message);
        return false;
    }
    for (const std::string& file : m_files) {
        if (!outputWriter.writePage(file)) {
            fmt::print(stderr, "can't write page file '{}', {}\n", file,
                       outputWriter.lastError().message);
            return false;
        }
    }
    return true;
}
