#include "CliTest.h"

#include <unistd.h>

namespace {

struct Row
{
    const char* name;
    std::vector<std::string> arguments; ///< The second one is the output.
};

const Row rows[] = {
    {"SameNameAsTheInput", {"-o", "in.png", "in.png"}},
    {"SameFileUnderAnotherName", {"-o", "./in.png", "in.png"}},
    {"SameNameAsTheSecondInput", {"-o", "in.png", "other.png", "in.png"}},
    {"SameNameAsTheCoverPage", {"-o", "cover.html", "-C", "cover.html", "in.png"}},
    {"OutputIsALinkToTheInput", {"-o", "link.png", "in.png"}},
    {"InputIsALinkToTheOutput", {"-o", "in.png", "link.png"}},
    {"BothAreLinksToOneFile", {"-o", "link.png", "link2.png"}},
    {"OutputIsAHardLinkToTheInput", {"-o", "hard.png", "in.png"}},
    {"InputIsAHardLinkToTheOutput", {"-o", "in.png", "hard.png"}},
    {"OutputIsALinkToTheCoverPage", {"-o", "cover-link.html", "-C", "cover.html", "in.png"}},
    {"InputFollowsAMissingOne", {"-o", "in.png", "missing.png", "in.png"}},
    // A name that is not UTF-8 is decoded before the document is opened, so
    // this one opens the file of the name with the replacement character.
    {"InputNameIsDecodedToTheOutputName", {"-o", "a\xef\xbf\xbd.png", "a\xff.png"}},
    {"CoverNameIsDecodedToTheOutputName",
     {"-o", "c\xef\xbf\xbd.html", "-C", "c\xff.html", "in.png"}},
};

class OutputThatIsAnInput : public CliTest, public testing::WithParamInterface<Row>
{
protected:
    void SetUp() override
    {
        folder().write("in.png", blackPng({20, 20}));
        folder().write("other.png", blackPng({30, 30}));
        folder().write("a\xef\xbf\xbd.png", blackPng({40, 40}));
        folder().write("cover.html", "<html>Cover</html>");
        folder().write("c\xef\xbf\xbd.html", "<html>Other cover</html>");
        link("in.png", "link.png");
        link("link.png", "link2.png");
        link("cover.html", "cover-link.html");
        ASSERT_EQ(::link(folder().path("in.png").c_str(), folder().path("hard.png").c_str()), 0);
    }
};

TEST_P(OutputThatIsAnInput, IsRefusedBeforeAnythingIsTouched)
{
    const std::string output = GetParam().arguments[1];
    const QByteArray before = content(output);
    const QStringList entriesBefore = folder().entries();
    EXPECT_TRUE(isFailure(run(GetParam().arguments), "can't open file '" + output + "'\n"));
    EXPECT_EQ(folder().entries(), entriesBefore);
    EXPECT_TRUE(content(output) == before);
}

INSTANTIATE_TEST_SUITE_P(Cli, OutputThatIsAnInput, testing::ValuesIn(rows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
