#include "Process.h"

#include <array>
#include <chrono>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char ** environ;

namespace gallery
{

namespace
{

std::string ReadAll(int descriptor)
{
    std::string text;
    std::array<char, 4096> buffer;
    for (;;)
    {
        ssize_t const count = read(descriptor, buffer.data(), buffer.size());
        if (count <= 0) return text;
        text.append(buffer.data(), static_cast<std::size_t>(count));
    }
}

pid_t Start(std::filesystem::path const & program, std::vector<std::string> const & arguments, int output)
{
    std::vector<std::string> words{program.string()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char *> pointers;
    for (std::string & word : words)
    {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);

    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDERR_FILENO);
    pid_t child = 0;
    int const error = posix_spawn(&child, program.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? child : -1;
}

} // namespace

Outcome Run(std::filesystem::path const & program, std::vector<std::string> const & arguments)
{
    std::array<int, 2> ends;
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe for " + program.string());
    auto const start = std::chrono::steady_clock::now();
    pid_t const child = Start(program, arguments, ends[1]);
    close(ends[1]);
    if (child < 0)
    {
        close(ends[0]);
        throw std::runtime_error(program.string() + " cannot be started");
    }
    Outcome outcome;
    outcome.output = ReadAll(ends[0]);
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    outcome.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

} // namespace gallery
