#include "morvane/Command.h"
#include "morvane/support/ProgramError.h"

#include <opencv2/core/utils/logger.hpp>

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>

namespace
{

/// The status for everything that is wrong with what the user gave.
constexpr int kFailure = 2;

int Fail(std::string const & command, std::string const & reason)
{
    std::cerr << "morvane" << (command.empty() ? "" : " " + command) << ": " << reason << '\n';
    return kFailure;
}

/// The first line of a message: what matters stands there.
std::string FirstLine(std::string const & text)
{
    return text.substr(0, text.find('\n'));
}

void DeclareCommands(CLI::App & program)
{
    auto & commands = program::Commands();
    std::sort(commands.begin(), commands.end(), [](auto const & one, auto const & other) {
        return one->Name() < other->Name();
    });
    for (auto const & command : commands)
    {
        command->Declare(*program.add_subcommand(command->Name(), command->Summary()));
    }
    program.require_subcommand(1);
}

int Run(CLI::App const & program)
{
    for (auto const & command : program::Commands())
    {
        if (!program.got_subcommand(command->Name())) continue;
        try
        {
            command->Run();
            return 0;
        }
        catch (program::ProgramError const & error)
        {
            return Fail(command->Name(), error.what());
        }
        catch (std::bad_alloc const &)
        {
            return Fail(command->Name(), "not enough memory");
        }
        catch (std::exception const & error)
        {
            return Fail(command->Name(), FirstLine(error.what()));
        }
    }
    return kFailure;
}

int ParseAndRun(int argc, char ** argv)
{
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);

    CLI::App program("Image analysis for images made from laser scans. A zero pixel means that nothing was measured.");
    program.set_version_flag("--version", "morvane " MORVANE_VERSION);
    DeclareCommands(program);
    try
    {
        program.parse(argc, argv);
    }
    catch (CLI::ParseError const & error)
    {
        // Help and version come as errors with the status 0.
        if (error.get_exit_code() == 0) return program.exit(error);
        return Fail("", FirstLine(error.what()) + " (see morvane --help)");
    }
    return Run(program);
}

} // namespace

int main(int argc, char ** argv)
{
    try
    {
        return ParseAndRun(argc, argv);
    }
    catch (...)
    {
        // What is left is memory that ran out before there was anything to say it with.
        return kFailure;
    }
}
