#include "kxInterrupt.h"

#include <csignal>

namespace
{
constexpr int Signals[] = {SIGINT, SIGTERM, SIGHUP};
struct sigaction before[sizeof Signals / sizeof *Signals];
volatile std::sig_atomic_t wanted = 0;

void note(int signal)
{
    wanted = signal;
}
} // namespace

kxInterrupt::kxInterrupt()
{
    wanted = 0;
    struct sigaction action = {};
    action.sa_handler = &note;
    action.sa_flags = SA_RESTART;
    for (unsigned i = 0; i < sizeof Signals / sizeof *Signals; ++i)
        sigaction(Signals[i], &action, &before[i]);
}

kxInterrupt::~kxInterrupt()
{
    for (unsigned i = 0; i < sizeof Signals / sizeof *Signals; ++i)
        sigaction(Signals[i], &before[i], nullptr);
    if (wanted != 0)
        std::raise(wanted);
}

bool kxInterrupt::isWanted()
{
    return wanted != 0;
}
