/// @file
/// Telling the user how far long work is.
#pragma once

#include <CLI/CLI.hpp>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <thread>

namespace program
{

/// Declares the option `--progress`.
void DeclareProgress(CLI::App & arguments, bool & isWanted);

/// Says on the standard error, while it lives, how much of some work is done and how many seconds have passed.
///
/// At a terminal that is one line, redrawn a few times a second, and cleared in the end. Where lines are wanted, it is a
/// plain line about each second, and a last one that says how the work ended. Otherwise it is nothing.
///
/// What is printed elsewhere meanwhile would stand in the same line.
class Progress
{
public:
    /// Starts.
    ///
    /// @param work what is done: the name of the command
    /// @param areLinesWanted whether plain lines are wanted, at a terminal too
    Progress(std::string const & work, bool areLinesWanted);

    /// Ends without a word: the work came to no end of its own, and what stopped it is told elsewhere.
    ~Progress();

    Progress(Progress const &) = delete;
    Progress & operator=(Progress const &) = delete;

    /// Takes the part that is done, 0 to 1; before the first call it is unknown. From any thread, at no cost of note.
    void Set(double share) { m_share = share; }

    /// Ends. Nothing more is said afterwards.
    ///
    /// @param outcome how the work ended, the word in the last of the plain lines
    void Finish(std::string const & outcome = "done");

private:
    enum class Form
    {
        Nothing,
        RedrawnLine,
        PlainLines
    };

    [[nodiscard]] double Seconds() const;
    [[nodiscard]] std::string State() const;

    /// What the thread does: writes now and then, until the end.
    void Report();

    /// Overwrites the line at the terminal. Trailing blanks remove what was longer.
    void Redraw(std::string const & text);

    /// @return whether this call ended it
    bool End();

    std::string const m_prefix;
    Form const m_form;
    std::chrono::steady_clock::time_point const m_start = std::chrono::steady_clock::now();
    std::atomic<double> m_share = -1.0;
    std::size_t m_drawn = 0; ///< characters in the line at the terminal
    bool m_isEnded = false;
    std::mutex m_mutex; ///< of what the thread and the others share: the two above
    std::condition_variable m_end;
    std::thread m_thread;
};

} // namespace program
