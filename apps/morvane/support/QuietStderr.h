/// @file
/// Keeps libraries from talking to the user behind our back.
#pragma once

namespace program
{

/// While it lives, what is written to the standard error goes nowhere: image codecs print there on broken files.
class QuietStderr
{
public:
    QuietStderr();
    ~QuietStderr();
    QuietStderr(QuietStderr const &) = delete;
    QuietStderr & operator=(QuietStderr const &) = delete;

private:
    int m_kept = -1;
};

} // namespace program
