#include "morvane/support/Progress.h"

#include <algorithm>
#include <cmath>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <system_error>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace program
{

namespace
{

using namespace std::chrono_literals;

bool IsAtTerminal()
{
#ifdef _WIN32
    return _isatty(2) != 0;
#else
    return isatty(STDERR_FILENO) != 0;
#endif
}

std::string WithDigits(double number, int digits)
{
    std::ostringstream text;
    text << std::fixed << std::setprecision(digits) << number;
    return text.str();
}

} // namespace

void DeclareProgress(CLI::App & arguments, bool & isWanted)
{
    arguments.add_flag(
        "--progress", isWanted,
        "say how far the work is, a line on the standard error each second; a terminal shows it anyway");
}

Progress::Progress(std::string const & work, bool areLinesWanted)
    : m_prefix("morvane " + work + ": ")
    , m_form(areLinesWanted ? Form::PlainLines : (IsAtTerminal() ? Form::RedrawnLine : Form::Nothing))
{
    if (m_form == Form::Nothing) return;
    if (m_form == Form::RedrawnLine) Redraw(State());
    try
    {
        m_thread = std::thread([this] { Report(); });
    }
    catch (std::system_error const &)
    {
        // The work does not need it.
    }
}

Progress::~Progress()
{
    End();
}

void Progress::Finish(std::string const & outcome)
{
    if (!End() || m_form != Form::PlainLines) return;
    std::cerr << m_prefix + outcome + ", " + WithDigits(Seconds(), 1) + " s\n";
}

double Progress::Seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - m_start).count();
}

std::string Progress::State() const
{
    double const share = m_share;
    std::string const part = share >= 0.0 ? WithDigits(std::floor(100.0 * std::min(share, 1.0)), 0) + " %, " : "";
    return m_prefix + part + WithDigits(std::floor(Seconds()), 0) + " s";
}

void Progress::Report()
{
    auto const period = m_form == Form::RedrawnLine ? 250ms : 1000ms;
    auto next = m_start + period;
    std::unique_lock lock(m_mutex);
    while (!m_end.wait_until(lock, next, [this] { return m_isEnded; }))
    {
        if (m_form == Form::RedrawnLine)
        {
            Redraw(State());
        }
        else
        {
            std::cerr << State() + '\n';
        }
        // After a pause of the machine there is nothing to catch up with.
        while (next <= std::chrono::steady_clock::now())
        {
            next += period;
        }
    }
}

void Progress::Redraw(std::string const & text)
{
    std::size_t const shown = text.size();
    std::string const blanks(m_drawn > shown ? m_drawn - shown : 0, ' ');
    std::cerr << '\r' + text + blanks + (text.empty() ? "\r" : "");
    m_drawn = shown;
}

bool Progress::End()
{
    {
        std::lock_guard const lock(m_mutex);
        if (m_isEnded) return false;
        m_isEnded = true;
    }
    m_end.notify_all();
    if (m_thread.joinable()) m_thread.join();
    if (m_form == Form::RedrawnLine) Redraw("");
    return true;
}

} // namespace program
