// What the program says of long work while it lasts. `denoise` does it.

#include "apps/ProgramFixture.h"
#include "apps/Terminal.h"

#include "support/RandomImages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <string>
#include <vector>

namespace morvane::tests
{

namespace
{

class ProgramProgress : public Program
{
protected:
    [[nodiscard]] std::vector<std::string> Arguments(std::string const & method = "plain") const
    {
        return {"denoise", In("noise.png"), "--method", method, "--strength", "10"};
    }

    /// Lets the work grow until it lasts long enough on this machine.
    ///
    /// @param rows to begin with
    /// @param isEnough runs it, and tells whether it saw what it waits for
    template <class Condition>
    void Grow(int rows, Condition const & isEnough) const
    {
        for (int attempt = 0; attempt < 6; ++attempt, rows *= 2)
        {
            WriteNoise(rows);
            if (isEnough()) return;
        }
        FAIL() << "nothing was said within any time";
    }

    void WriteNoise(int rows) const
    {
        Random random(1);
        cv::Mat1b noise(rows, 200);
        std::generate(noise.begin(), noise.end(), [&random] { return static_cast<uchar>(100 + random.Below(20)); });
        ASSERT_TRUE(cv::imwrite(In("noise.png"), noise));
    }
};

TEST_F(ProgramProgress, PlainLines_ComeEachSecondAndInTheEnd)
{
    std::vector<std::string> arguments = Arguments();
    arguments.emplace_back("--progress");
    process::Outcome outcome;
    Grow(16000, [&] {
        outcome = Run(arguments);
        return outcome.errors.find('%') != std::string::npos;
    });
    EXPECT_EQ(outcome.status, 0);
    EXPECT_TRUE(std::regex_match(
        outcome.errors, std::regex("(morvane denoise: ([0-9]{1,3} %, )?[1-9][0-9]* s\n)+morvane denoise: done, "
                                   "[0-9]+\\.[0-9] s\n")))
        << outcome.errors;
    auto const lines = std::count(outcome.errors.begin(), outcome.errors.end(), '\n');
    EXPECT_LE(static_cast<double>(lines), outcome.seconds + 1.0);
}

TEST_F(ProgramProgress, ShortWork_EndsWithOnePlainLine)
{
    WriteNoise(8);
    for (std::string const method : {"parallel", "iterative"})
    {
        std::vector<std::string> arguments = Arguments(method);
        arguments.emplace_back("--progress");
        process::Outcome const outcome = Run(arguments);
        EXPECT_EQ(outcome.status, 0);
        EXPECT_TRUE(std::regex_match(outcome.errors, std::regex("morvane denoise: done, [0-9]+\\.[0-9] s\n")))
            << outcome.errors;
    }
}

TEST_F(ProgramProgress, Terminal_HasOneLineThatAThreadRedraws_AndThatIsClearedInTheEnd)
{
    TerminalOutcome outcome;
    Grow(2048, [&] {
        outcome = RunAtTerminal(MORVANE_PROGRAM, Arguments());
        return outcome.shown.find('%') != std::string::npos;
    });
    EXPECT_EQ(outcome.status, 0);
    // What was done is not known at first, and later it is.
    EXPECT_TRUE(std::regex_match(
        outcome.shown,
        std::regex("(\rmorvane denoise: [0-9]+ s)+(\rmorvane denoise: [0-9]{1,3} %, [0-9]+ s *)+\r +\r")))
        << outcome.shown;
    EXPECT_EQ(LinesLeft(outcome.shown), std::vector<std::string>{""}) << outcome.shown;
}

TEST_F(ProgramProgress, Terminal_HasPlainLinesWhereTheyAreWanted)
{
    WriteNoise(8);
    std::vector<std::string> arguments = Arguments();
    arguments.emplace_back("--progress");
    TerminalOutcome const outcome = RunAtTerminal(MORVANE_PROGRAM, arguments);
    EXPECT_EQ(outcome.status, 0);
    // The terminal adds the carriage return of its own.
    EXPECT_TRUE(std::regex_match(outcome.shown, std::regex("morvane denoise: done, [0-9]+\\.[0-9] s\r\n")))
        << outcome.shown;
}

TEST_F(ProgramProgress, Nothing_IsSaidToOthersWhoDoNotAsk)
{
    WriteNoise(300);
    process::Outcome const outcome = Run(Arguments());
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
}

TEST_F(ProgramProgress, Failure_IsSaidOnALineOfItsOwn)
{
    WriteNoise(8);
    std::vector<std::string> arguments = Arguments();
    arguments.insert(arguments.end(), {"--picture", "/proc/picture.png"});
    TerminalOutcome const outcome = RunAtTerminal(MORVANE_PROGRAM, arguments);
    EXPECT_EQ(outcome.status, 2);
    std::vector<std::string> const lines = LinesLeft(outcome.shown);
    ASSERT_EQ(lines.size(), 2U) << outcome.shown;
    EXPECT_EQ(lines[0], "morvane denoise: /proc/picture.png: cannot be written");
}

} // namespace

} // namespace morvane::tests
