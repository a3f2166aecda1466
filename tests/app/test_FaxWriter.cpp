#include "app/FaxWriter.h"

#include "support/SampleImages.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <gtest/gtest.h>

namespace {

constexpr FaxConfiguration configuration = {FaxPaperSize::A4,          FaxResolution::Standard,
                                            FaxRotation::Rotate0,      {},
                                            QMarginsF(0., 0., 0., 0.), FaxCompression::G4};

class FaxWriterTest : public testing::Test
{
protected:
    void SetUp() override
    {
        m_folder.write("in.png", SampleImages::pngFile(SampleImages::quarters({20, 20})));
        m_folder.write("cover.html", "<html>Cover</html>");
    }

    std::string path(const std::string& fileName) const { return m_folder.path(fileName); }

    QStringList entries() const { return m_folder.entries(); }

    FaxWriter& writer() { return m_writer; }

    // The result of write(), whose message is kept.
    bool write(const std::string& outputFile)
    {
        testing::internal::CaptureStderr();
        const bool isWritten = m_writer.write(outputFile);
        m_message = testing::internal::GetCapturedStderr();
        return isWritten;
    }

    const std::string& message() const { return m_message; }

private:
    TemporaryFolder m_folder;
    FaxWriter m_writer{configuration};
    std::string m_message;
};

const QStringList inputsOnly = {QStringLiteral("cover.html"), QStringLiteral("in.png")};

TEST_F(FaxWriterTest, WritesTheCoverPageAndAllFilesInTheirOrder)
{
    writer().setCoverPage(path("cover.html"));
    writer().setFiles({path("in.png"), path("in.png")});
    EXPECT_TRUE(write(path("out.tif")));
    EXPECT_EQ(message(), "");
    EXPECT_EQ(readTiff(path("out.tif")).size(), 3U);
}

TEST_F(FaxWriterTest, TakesAnEmptyCoverPageNameForNoCoverPage)
{
    writer().setCoverPage("");
    writer().setFiles({path("in.png")});
    EXPECT_TRUE(write(path("out.tif")));
    EXPECT_EQ(readTiff(path("out.tif")).size(), 1U);
}

TEST_F(FaxWriterTest, OpensTheOutputAnewForEachCall)
{
    writer().setFiles({path("in.png")});
    EXPECT_TRUE(write(path("out.tif")));
    EXPECT_TRUE(write(path("out.tif")));
    EXPECT_EQ(readTiff(path("out.tif")).size(), 1U);
}

TEST_F(FaxWriterTest, FailsWithoutAMessageForAnEmptyOutputName)
{
    writer().setFiles({path("in.png")});
    EXPECT_FALSE(write(""));
    EXPECT_EQ(message(), "");
}

TEST_F(FaxWriterTest, FailsWithoutAMessageForNoInputFiles)
{
    writer().setCoverPage(path("cover.html"));
    EXPECT_FALSE(write(path("out.tif")));
    EXPECT_EQ(message(), "");
    EXPECT_EQ(entries(), inputsOnly);
}

TEST_F(FaxWriterTest, LeavesNoOutputAfterAMissingSecondFile)
{
    writer().setFiles({path("in.png"), path("missing.png")});
    EXPECT_FALSE(write(path("out.tif")));
    EXPECT_EQ(message(), "can't write page file '" + path("missing.png") + "', file not found\n");
    EXPECT_EQ(entries(), inputsOnly);
}

TEST_F(FaxWriterTest, StopsAtTheFirstFileThatFails)
{
    writer().setFiles({path("missing.png"), path("missing too.png")});
    EXPECT_FALSE(write(path("out.tif")));
    EXPECT_EQ(message(), "can't write page file '" + path("missing.png") + "', file not found\n");
}

TEST_F(FaxWriterTest, StopsAtACoverPageThatIsNotHtmlBeforeAnyFile)
{
    writer().setCoverPage(path("in.png"));
    writer().setFiles({path("missing.png")});
    EXPECT_FALSE(write(path("out.tif")));
    EXPECT_EQ(message(),
              "can't write cover page file '" + path("in.png") + "', unsupported png format\n");
    EXPECT_EQ(entries(), inputsOnly);
}

TEST_F(FaxWriterTest, ReportsAnOutputInAMissingFolder)
{
    writer().setFiles({path("in.png")});
    const std::string name = path("none/out.tif");
    EXPECT_FALSE(write(name));
    EXPECT_EQ(message(), "TIFFOpen: " + name + ": No such file or directory.\ncan't open file '" +
                             name + "'\n");
}

TEST_F(FaxWriterTest, RefusesAnOutputThatIsAnInput)
{
    writer().setFiles({path("in.png")});
    EXPECT_FALSE(write(path("in.png")));
    EXPECT_EQ(message(), "can't open file '" + path("in.png") + "'\n");
    EXPECT_EQ(entries(), inputsOnly);
}

TEST_F(FaxWriterTest, RefusesAnOutputThatIsTheCoverPage)
{
    writer().setCoverPage(path("cover.html"));
    writer().setFiles({path("in.png")});
    EXPECT_FALSE(write(path("cover.html")));
    EXPECT_EQ(message(), "can't open file '" + path("cover.html") + "'\n");
    EXPECT_EQ(entries(), inputsOnly);
}

} // namespace
