#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>

/// Gives names out, each once: "Walk", "Walk_1", "Walk_2".
class kxUniqueNames
{
public:
    /// `proposal`, or with the first number that makes it new.
    std::string take(const std::string& proposal);
    /// A name that is there already.
    void reserve(const std::string& name) { _taken.insert(name); }
    bool isTaken(const std::string& name) const { return _taken.count(name) > 0; }

private:
    std::unordered_set<std::string> _taken;
    std::unordered_map<std::string, unsigned> _next; ///< the number to try next, by proposal
};
