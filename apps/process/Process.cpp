#include "process/Process.h"

#include <array>
#include <chrono>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace process
{

namespace
{

/// A pipe that closes what is still open of it.
class Pipe
{
public:
    Pipe()
    {
        if (pipe2(m_ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe is to be had");
    }
    ~Pipe()
    {
        close(m_ends[0]);
        CloseWriting();
    }
    Pipe(Pipe const &) = delete;
    Pipe & operator=(Pipe const &) = delete;

    [[nodiscard]] int Reading() const { return m_ends[0]; }
    [[nodiscard]] int Writing() const { return m_ends[1]; }

    void CloseWriting()
    {
        if (m_ends[1] >= 0) close(m_ends[1]);
        m_ends[1] = -1;
    }

private:
    std::array<int, 2> m_ends{-1, -1};
};

/// Reads two streams until both have ended, whichever has something first.
void ReadBoth(int output, int errors, Outcome & outcome)
{
    std::array<pollfd, 2> streams{pollfd{output, POLLIN, 0}, pollfd{errors, POLLIN, 0}};
    std::array<std::string *, 2> const texts{&outcome.output, &outcome.errors};
    std::array<char, 4096> buffer;
    while (streams[0].fd >= 0 || streams[1].fd >= 0)
    {
        poll(streams.data(), streams.size(), -1);
        for (std::size_t index = 0; index < streams.size(); ++index)
        {
            if (streams[index].fd < 0 || streams[index].revents == 0) continue;
            ssize_t const count = read(streams[index].fd, buffer.data(), buffer.size());
            if (count > 0)
            {
                texts[index]->append(buffer.data(), static_cast<std::size_t>(count));
            }
            else
            {
                // A negative number is passed over by poll.
                streams[index].fd = -1;
            }
        }
    }
}

pid_t Start(std::filesystem::path const & program, std::vector<std::string> const & arguments, int output, int errors)
{
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string & word : words)
    {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
    pid_t child = 0;
    int const error = posix_spawn(&child, program.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error(program.string() + " cannot be started");
    return child;
}

} // namespace

Outcome Run(std::filesystem::path const & program, std::vector<std::string> const & arguments)
{
    Pipe output;
    Pipe errors;
    auto const start = std::chrono::steady_clock::now();
    pid_t const child = Start(program, arguments, output.Writing(), errors.Writing());
    output.CloseWriting();
    errors.CloseWriting();

    Outcome outcome;
    ReadBoth(output.Reading(), errors.Reading(), outcome);
    int status = 0;
    waitpid(child, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

} // namespace process
