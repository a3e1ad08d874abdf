#pragma once

/// While it lives, the signals that end a program (Ctrl+C, a closed terminal, `kill`) only set isWanted(): whoever
/// works for long asks, stops, and leaves nothing half done. When it goes, the signal ends the program. One at a
/// time.
class kxInterrupt
{
public:
    kxInterrupt();
    ~kxInterrupt();
    kxInterrupt(const kxInterrupt&) = delete;
    kxInterrupt& operator=(const kxInterrupt&) = delete;

    static bool isWanted();
};
