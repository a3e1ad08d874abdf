#pragma once

#include <kxExport.h>

#include <functional>
#include <string>

/// Runs text in the application's interpreter.
class KX_API kxScript
{
public:
    /// False where the text raised; the trace is in the log.
    static bool run(const std::string& text);
};

/// Levels at which a script module is called back.
class KX_API kxPythonRegisterFactory
{
public:
    enum Level
    {
        BeforeStart = 0, ///< the interpreter hasn't started: built-in modules are entered
        AfterStart = 1   ///< it runs: names are brought into the script namespace
    };

    /// Runs every registered function, in the order of registration. Functions registered later, by a library that is
    /// loaded later, run at once for the levels that have passed.
    static void run(Level level);
};

/// Registers a script module for as long as it lives.
class KX_API kxPythonRegister
{
public:
    explicit kxPythonRegister(std::function<void(kxPythonRegisterFactory::Level)> function);
    ~kxPythonRegister();
    kxPythonRegister(const kxPythonRegister&) = delete;
    kxPythonRegister& operator=(const kxPythonRegister&) = delete;

private:
    friend class kxPythonRegisterFactory;
    std::function<void(kxPythonRegisterFactory::Level)> _function;
};
