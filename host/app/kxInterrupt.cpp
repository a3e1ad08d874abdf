#include "kxInterrupt.h"

#include <python/kxInterpreter.h>

#include <csignal>

namespace
{
constexpr int Signals[] = {SIGINT, SIGTERM, SIGHUP};
struct sigaction before[sizeof Signals / sizeof *Signals];
volatile std::sig_atomic_t wanted = 0;
int depth = 0;

void note(int signal)
{
    if (wanted != 0)
    {
        std::signal(signal, SIG_DFL);
        std::raise(signal);
    }
    wanted = signal;
    kxInterpreter::interrupt(signal);
}

void forget()
{
    wanted = 0;
}
} // namespace

kxInterrupt::kxInterrupt()
{
    if (depth++ > 0)
        return;
    wanted = 0;
    for (unsigned i = 0; i < sizeof Signals / sizeof *Signals; ++i)
        sigaction(Signals[i], nullptr, &before[i]);
    kxInterpreter::heedInterrupts(&forget); // takes SIGINT
    struct sigaction action = {};
    action.sa_handler = &note; // without SA_RESTART, so that a script that waits for its input hears of it
    for (unsigned i = 0; i < sizeof Signals / sizeof *Signals; ++i)
        sigaction(Signals[i], before[i].sa_handler == SIG_IGN ? &before[i] : &action, nullptr); // as nohup has it
}

kxInterrupt::~kxInterrupt()
{
    if (--depth > 0)
        return;
    for (unsigned i = 0; i < sizeof Signals / sizeof *Signals; ++i)
        sigaction(Signals[i], &before[i], nullptr);
    if (wanted != 0)
        std::raise(wanted);
}

bool kxInterrupt::isWanted()
{
    return wanted != 0;
}
