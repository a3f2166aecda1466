#include "support/SampleImages.h"
#include "support/SamplePdf.h"
#include "support/TemporaryFolder.h"
#include "support/TiffFile.h"

#include <QByteArray>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSize>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

constexpr int cannotBeDoneHere = 77;

// One run of the server for all jobs, because each call takes its time.
class HylaFaxServer : public testing::Test
{
protected:
    // Longer than other programs of the tests may take; the script has a limit of its own.
    void serve()
    {
        m_server.setProcessChannelMode(QProcess::MergedChannels);
        m_server.start(QStringLiteral("/bin/bash"),
                       {QStringLiteral(MORVALTIDE_SERVE), QStringLiteral(MORVALTIDE_MODEM),
                        QStringLiteral(MORVALTIDE_PROGRAM), QStringLiteral(MORVALTIDE_HYLAFAX),
                        m_folder.qPath(QStringLiteral("."))});
        constexpr int limitMs = 280000;
        ASSERT_TRUE(m_server.waitForFinished(limitMs));
        m_said = m_server.readAll().toStdString();
    }

    void write(const std::string& name, const QByteArray& content) const
    {
        m_folder.write(name, content);
    }

    std::string text(const std::string& name) const
    {
        QFile file(QString::fromStdString(m_folder.path(name)));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name;
        return file.readAll().toStdString();
    }

    std::vector<TiffPage> sent(int job) const { return fax("sent-", job); }
    std::vector<TiffPage> received(int job) const { return fax("received-", job); }

    void expectReceived(int job, std::size_t pageCount, const QSize& size) const
    {
        SCOPED_TRACE("job " + std::to_string(job) + ", calls:\n" + text("log/calls"));
        EXPECT_EQ(text("status-" + std::to_string(job)), "status:\nstatuscode:0\n");
        const std::vector<TiffPage> expected = sent(job);
        const std::vector<TiffPage> actual = received(job);
        ASSERT_EQ(expected.size(), pageCount);
        ASSERT_EQ(actual.size(), pageCount);
        for (std::size_t page = 0; page < pageCount; ++page) {
            EXPECT_EQ(actual[page].pixels.size(), size);
            EXPECT_TRUE(isSamePicture(actual[page].pixels, expected[page].pixels))
                << "page " << page;
        }
    }

    std::vector<TiffPage> fax(const std::string& name, int job) const
    {
        return readTiff(m_folder.path(name + std::to_string(job) + ".tif"));
    }

    TemporaryFolder m_folder;
    QProcess m_server;
    std::string m_said;
};

bool isWhite(const QImage& page)
{
    QImage white(page.size(), QImage::Format_Mono);
    white.setColorTable({0xFFFFFFFF, 0xFF000000});
    white.fill(0);
    return bool(isSamePicture(page, white));
}

TEST_F(HylaFaxServer, SendsWhatTheConverterWritesBitForBit)
{
    write("two.pdf", SamplePdf::equalPages(2));
    write("one.pdf", SamplePdf::equalPages(1));
    // Coded without fill bits, its last line got lost on the way.
    write("drawing.ps", "%!PS\n/Helvetica 40 selectfont 72 500 moveto (hello) show showpage\n");
    write("picture.tif", SampleImages::tiffFile({{SampleImages::bilevel({600, 700}), 1}}));
    write("bad.ps", "%!PS\n1 0 div showpage\n");
    // In group 4, one-dimensional and two-dimensional group 3; the last but one
    // with a header line.
    write("jobs", "pdf 196 297 3 no two.pdf\n"
                  "pdf 98 280 0 no one.pdf\n"
                  "tiff 196 364 1 no picture.tif\n"
                  "postscript 98 280 0 no drawing.ps\n"
                  "pdf 196 297 3 yes one.pdf\n"
                  "postscript 196 297 3 no bad.ps\n");
    ASSERT_NO_FATAL_FAILURE(serve());
    if (m_server.exitCode() == cannotBeDoneHere) {
        GTEST_SKIP() << m_said;
    }
    ASSERT_EQ(m_server.exitCode(), 0) << m_said;

    expectReceived(1, 2, {1728, 2292});
    expectReceived(2, 1, {1728, 1078});
    expectReceived(3, 1, {1728, 2744});
    expectReceived(4, 1, {1728, 1078});
    EXPECT_EQ(text("log/calls").substr(text("log/calls").find('\n')),
              "\nOK, 2 pages, T.6\nOK, 1 pages, T.4 1-D\nOK, 1 pages, T.4 2-D\n"
              "OK, 1 pages, T.4 1-D\nOK, 1 pages, T.6\n");

    // The header line covers nothing of a page that has room for it.
    const QImage page = sent(5).at(0).pixels;
    const QImage arrived = received(5).at(0).pixels;
    ASSERT_EQ(arrived.size(), page.size());
    constexpr int room = 39; // 0.2 inches
    EXPECT_TRUE(isWhite(page.copy(0, 0, page.width(), room)));
    EXPECT_FALSE(isWhite(arrived.copy(0, 0, page.width(), room)));
    EXPECT_TRUE(isSamePicture(arrived.copy(0, room, page.width(), page.height() - room),
                              page.copy(0, room, page.width(), page.height() - room)));

    EXPECT_EQ(text("status-6"), "status:The PostScript document cannot be faxed: Error: "
                                "/undefinedresult in --div--\\\n\nstatuscode:347\n");
}

} // namespace
