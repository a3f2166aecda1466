#pragma once

#include "support/ProgramRun.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QByteArray>
#include <QImage>
#include <QRect>

#include <gtest/gtest.h>

#include <string>
#include <vector>

/// Tests that run the program in a folder of their own.
class CliTest : public testing::Test
{
protected:
    const TemporaryFolder& folder() const { return m_folder; }

    /// How the program is started for `arguments`, to be changed before runProgram().
    ProgramStart start(const std::vector<std::string>& arguments) const;

    ProgramResult run(const std::vector<std::string>& arguments) const;

    /// The content of a file of the folder; a test failure if there is none.
    QByteArray content(const std::string& fileName) const;

    /// True if the name is in the folder, be it a link that leads nowhere.
    bool exists(const std::string& fileName) const;

    /// The pages of the output file, or of another TIFF file of the folder.
    std::vector<TiffPage> pages(const std::string& fileName = "out.tif") const;

    /// Creates a symbolic link in the folder.
    void link(const std::string& target, const std::string& fileName) const;

private:
    TemporaryFolder m_folder;
};

/// A PNG file of a picture that is black all over.
QByteArray blackPng(const QSize& size);

/// A white page with a black rectangle.
QImage pageWith(const QSize& pageSize, const QRect& black);

/// Exit status 0 and nothing on standard output and standard error.
testing::AssertionResult isSilentSuccess(const ProgramResult& result);

/// Exit status 1, `error` on standard error and nothing on standard output.
testing::AssertionResult isFailure(const ProgramResult& result, const std::string& error);

/// The same where a library says something on lines of its own first.
testing::AssertionResult isFailureAfterRemarks(const ProgramResult& result,
                                               const std::string& lastLine);
