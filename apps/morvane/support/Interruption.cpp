#include "morvane/support/Interruption.h"

#include <csignal>

namespace program
{

namespace
{

volatile std::sig_atomic_t isRequested = 0; // NOLINT(cppcoreguidelines-avoid-non-const-global-variables): of a handler

void Note(int signal)
{
    isRequested = 1;
    // Who asks twice does not want to wait.
    static_cast<void>(std::signal(signal, SIG_DFL));
}

} // namespace

Interruption::Interruption()
    : m_former((isRequested = 0, std::signal(SIGINT, Note)))
{}

Interruption::~Interruption()
{
    static_cast<void>(std::signal(SIGINT, m_former));
}

bool Interruption::IsRequested()
{
    return isRequested != 0;
}

} // namespace program
