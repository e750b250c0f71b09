#include "apps/Terminal.h"

#include <gtest/gtest.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace morvane::tests
{

namespace
{

/// A file descriptor that closes in the end.
class Descriptor
{
public:
    explicit Descriptor(int number)
        : m_number(number)
    {
        if (number < 0) throw std::runtime_error("no terminal is to be had");
    }
    ~Descriptor() { Close(); }
    Descriptor(Descriptor const &) = delete;
    Descriptor & operator=(Descriptor const &) = delete;

    [[nodiscard]] int Number() const { return m_number; }

    void Close()
    {
        if (m_number >= 0) close(m_number);
        m_number = -1;
    }

private:
    int m_number;
};

pid_t Start(std::string const & program, std::vector<std::string> words, int terminal)
{
    words.insert(words.begin(), program);
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string & word : words)
    {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, terminal, STDERR_FILENO);
    pid_t child = 0;
    int const error = posix_spawn(&child, program.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error(program + " cannot be started");
    return child;
}

/// Reads what is sent to a terminal.
///
/// @param text that is waited for, if any
/// @param whenSeen called once it was there
template <class Action>
std::string ReadAll(int terminal, std::string const & text, Action const & whenSeen)
{
    bool isAwaited = !text.empty();
    std::string all;
    std::array<char, 4096> buffer;
    // Once nobody writes any more, reading fails.
    while (true)
    {
        ssize_t const count = read(terminal, buffer.data(), buffer.size());
        if (count <= 0) return all;
        all.append(buffer.data(), static_cast<std::size_t>(count));
        if (!isAwaited || all.find(text) == std::string::npos) continue;
        isAwaited = false;
        whenSeen();
    }
}

} // namespace

TerminalOutcome
RunAtTerminal(std::string const & program, std::vector<std::string> const & arguments, std::string const & interruptAt)
{
    Descriptor const ours(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    std::array<char, 128> name{};
    if (grantpt(ours.Number()) != 0 || unlockpt(ours.Number()) != 0 ||
        ptsname_r(ours.Number(), name.data(), name.size()) != 0)
    {
        throw std::runtime_error("no terminal is to be had");
    }
    Descriptor theirs(open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
    pid_t const child = Start(program, arguments, theirs.Number());
    theirs.Close();

    TerminalOutcome outcome;
    outcome.shown = ReadAll(ours.Number(), interruptAt, [&] { kill(child, SIGINT); });
    int status = 0;
    waitpid(child, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    return outcome;
}

std::vector<std::string> LinesLeft(std::string const & shown)
{
    std::vector<std::string> lines(1);
    std::size_t column = 0;
    for (char const character : shown)
    {
        if (character == '\n')
        {
            lines.emplace_back();
        }
        else if (character == '\r')
        {
            column = 0;
        }
        else
        {
            std::string & line = lines.back();
            if (line.size() <= column) line.resize(column + 1, ' ');
            line[column++] = character;
        }
    }
    for (std::string & line : lines)
    {
        line.erase(line.find_last_not_of(' ') + 1);
    }
    return lines;
}

TEST(Terminal, LinesLeft_KnowsWhatIsOverwritten)
{
    using Lines = std::vector<std::string>;
    EXPECT_EQ(LinesLeft(""), Lines{""});
    EXPECT_EQ(LinesLeft("one\r\ntwo"), (Lines{"one", "two"}));
    EXPECT_EQ(LinesLeft("\rlonger\rnew\r"), Lines{"newger"});
    EXPECT_EQ(LinesLeft("\rlonger\rnew   \r      \r"), Lines{""});
}

} // namespace morvane::tests
