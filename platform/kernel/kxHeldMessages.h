#pragma once

#include <kxExport.h>

#include <string>

/// While a script runs, the message that animations changed is held: a script that makes thousands has the trees built
/// anew once. Main thread only.
///
/// What is held goes out at the end of the script, where deliver() is called, and at a turn of the event loop.
class KX_API kxHeldMessages
{
public:
    /// A script's life; within another one it does nothing.
    class KX_API Scope
    {
    public:
        Scope();
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        const bool _before;
    };
    /// What the user does meanwhile isn't held.
    class KX_API Pause
    {
    public:
        Pause();
        ~Pause();
        Pause(const Pause&) = delete;
        Pause& operator=(const Pause&) = delete;

    private:
        const bool _before;
    };

    static void deliver();

private:
    friend class kxController;
    /// True where the message goes out later.
    static bool takes(const std::string& name);
};
