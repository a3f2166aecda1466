#pragma once

#include "support/ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Which of its three names the converter is called by.
enum class DocumentKind
{
    PostScript,
    Pdf,
    Tiff
};

/// What the queue asks for, as faxq of HylaFAX 6.0.7 writes it.
struct QueueRequest
{
    DocumentKind kind = DocumentKind::Pdf;
    std::string resolution = "196";
    std::string width = "1728";
    std::string length = "297";
    std::string format = "-3";
    std::string maximumPages = "4096";
};

/// Tests that call the converter of a HylaFAX queue in a spool folder.
class QueueTest : public testing::Test
{
protected:
    QueueTest();

    /// Puts a document of the queue into the spool folder.
    void submit(const QByteArray& content) const;

    /// How faxq starts the converter, after it has made the empty output.
    ProgramStart start(const QueueRequest& request) const;
    ProgramResult run(const QueueRequest& request) const;

    /// The pages of the output.
    std::vector<TiffPage> pages() const;

    /// The pages that the program makes of a document by itself.
    std::vector<TiffPage> directPages(const std::string& fileName, const QByteArray& content,
                                      const std::vector<std::string>& options) const;

    QByteArray outputContent() const;

    /// What is in a folder of the spool folder.
    QStringList entries(const std::string& folderName) const;

    std::string path(const std::string& name) const { return m_spool.path(name); }
    void write(const std::string& name, const QByteArray& content) const;

    std::string document = "docq/doc7.any.1"; // names as they are in a queue
    std::string output = "docq/doc7.any;c1";

private:
    TemporaryFolder m_spool;
    TemporaryFolder m_direct;
};

/// Whether the server's own checker of TIFF files is installed.
bool hasTiffcheck();

/// Exit status 0 and nothing said.
testing::AssertionResult isQueueSuccess(const ProgramResult& result);

/// Exit status 254 and `message` as the only line.
testing::AssertionResult isRejected(const ProgramResult& result, const std::string& message);
