#include "CliTest.h"

#include "support/OddPictures.h"

#include <filesystem>

namespace {

// What glibc fills memory with: with nothing, and with these bytes when it is
// given back (and their complement when it is handed out). In the one every bit
// has the other value than in the other.
const std::vector<std::string> fills = {"0", "85", "170"};

/// How one run ended, and what it wrote.
struct Outcome
{
    ProgramResult result;
    QByteArray file;
};

class LeftoverMemory : public CliTest
{
protected:
    Outcome outcome(std::vector<std::string> arguments, const std::string& fill) const
    {
        arguments.insert(arguments.begin(), {"-o", "out.tif"});
        ProgramStart conversion = start(arguments);
        conversion.environment["MALLOC_PERTURB_"] = fill;
        // The blocks of this cache are not filled.
        conversion.environment["GLIBC_TUNABLES"] = "glibc.malloc.tcache_count=0";
        Outcome outcome;
        outcome.result = runProgram(conversion);
        if (exists("out.tif")) {
            outcome.file = content("out.tif");
            std::filesystem::remove(folder().path("out.tif"));
        }
        return outcome;
    }

    void expectAlwaysTheSame(const std::vector<std::string>& arguments) const
    {
        const Outcome plain = outcome(arguments, fills[0]);
        ASSERT_EQ(plain.result.exitStatus, 0) << plain.result.error;
        for (std::size_t i = 1; i < fills.size(); ++i) {
            const Outcome other = outcome(arguments, fills[i]);
            EXPECT_EQ(other.result.signal, 0) << arguments.back();
            EXPECT_EQ(other.result.exitStatus, plain.result.exitStatus) << arguments.back();
            EXPECT_EQ(other.result.error, plain.result.error) << arguments.back();
            EXPECT_TRUE(other.file == plain.file)
                << arguments.back() << " where memory was filled with " << fills[i];
        }
    }

    // Writes those of the files that can be decoded, and gives their names.
    std::vector<std::string> decodable(const std::vector<OddPictures::File>& files) const
    {
        std::vector<std::string> names;
        for (const OddPictures::File& file : files) {
            if (!QImage::fromData(file.content).isNull()) {
                folder().write(file.name, file.content);
                names.push_back(file.name);
            }
        }
        return names;
    }

    // On the smallest pages.
    void expectAlwaysTheSamePages(const std::vector<OddPictures::File>& files) const
    {
        std::vector<std::string> arguments = {"-p", "letter", "-r", "standard"};
        const std::vector<std::string> names = decodable(files);
        ASSERT_FALSE(names.empty());
        arguments.insert(arguments.end(), names.begin(), names.end());
        expectAlwaysTheSame(arguments);
    }
};

TEST_F(LeftoverMemory, DoesNotShowInSamples)
{
    const std::string samples = MORVALTIDE_SAMPLES;
    expectAlwaysTheSame({samples + "/photo.jpg"});
    expectAlwaysTheSame({"-r", "superfine", samples + "/chart.png", samples + "/scan.tif"});
    expectAlwaysTheSame({"-C", samples + "/cover.html", samples + "/report.pdf"});
}

TEST_F(LeftoverMemory, DoesNotShowInTiffFiles)
{
    expectAlwaysTheSamePages(OddPictures::tiffFiles());
}

TEST_F(LeftoverMemory, DoesNotShowInPngFiles)
{
    expectAlwaysTheSamePages(OddPictures::pngFiles());
}

TEST_F(LeftoverMemory, DoesNotShowInJpegFiles)
{
    expectAlwaysTheSamePages(OddPictures::jpegFiles());
}

TEST_F(LeftoverMemory, DoesNotShowInTruncatedFiles)
{
    expectAlwaysTheSamePages(OddPictures::truncatedFiles());
}

TEST_F(LeftoverMemory, DoesNotShowInPicturesOfACoverPage)
{
    QByteArray html = "<html>";
    for (const std::string& name : decodable(OddPictures::files())) {
        html += "<img src=\"" + QByteArray::fromStdString(name) + "\">";
    }
    folder().write("cover.html", html);
    folder().write("in.png", blackPng({20, 20}));
    expectAlwaysTheSame({"-C", "cover.html", "in.png"});
}

} // namespace
