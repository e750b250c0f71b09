#include "morvane/support/QuietStderr.h"

#include <cstdio>

#ifdef _WIN32

namespace program
{

QuietStderr::QuietStderr() = default;
QuietStderr::~QuietStderr() = default;

} // namespace program

#else

#include <fcntl.h>
#include <unistd.h>

namespace program
{

QuietStderr::QuietStderr()
{
    std::fflush(stderr);
    int const nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) return;
    m_kept = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
    if (m_kept >= 0) dup2(nowhere, STDERR_FILENO);
    close(nowhere);
}

QuietStderr::~QuietStderr()
{
    if (m_kept < 0) return;
    std::fflush(stderr);
    dup2(m_kept, STDERR_FILENO);
    close(m_kept);
}

} // namespace program

#endif
