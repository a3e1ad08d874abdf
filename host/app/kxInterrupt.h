#pragma once

/// While it lives, the signals that end a program (Ctrl+C, a closed terminal, `kill`) only set isWanted(): whoever
/// works for long asks, stops, and leaves nothing half done. A script that runs gets KeyboardInterrupt or SystemExit
/// by them; one that got KeyboardInterrupt may go on. A second signal before that ends the program at once. When the
/// outermost one goes, a signal that is left ends the program.
class kxInterrupt
{
public:
    kxInterrupt();
    ~kxInterrupt();
    kxInterrupt(const kxInterrupt&) = delete;
    kxInterrupt& operator=(const kxInterrupt&) = delete;

    static bool isWanted();
};
