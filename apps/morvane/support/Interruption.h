/// @file
/// Ctrl-C as a request to come to an end.
#pragma once

namespace program
{

/// While it lives, an interrupt from the terminal is noted and does not end the program; a second one does.
class Interruption
{
public:
    Interruption();
    ~Interruption();

    Interruption(Interruption const &) = delete;
    Interruption & operator=(Interruption const &) = delete;

    /// Tells whether one was noted.
    [[nodiscard]] static bool IsRequested();

private:
    using Handler = void (*)(int);

    Handler m_former;
};

} // namespace program
