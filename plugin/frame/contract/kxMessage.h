#pragma once

#include <kxExport.h>

#include <boost/any.hpp>

#include <cstdint>
#include <map>
#include <string>

/// What modules, widgets and the host tell each other: an optional id and values by key.
class KX_API kxMessage
{
public:
    kxMessage() = default;
    explicit kxMessage(std::uint64_t id) : _id(id) {}

    /// 0 for a message without id. An id is one bit.
    std::uint64_t id() const { return _id; }

    /// Stores `value` under `key`. Where the key is there already, it is replaced only with `overwrite`.
    void set(const std::string& key, const boost::any& value, bool overwrite = true);
    /// An empty any for a key that isn't there.
    boost::any get(const std::string& key) const;
    void remove(const std::string& key);

    const std::map<std::string, boost::any>& attributes() const { return _attributes; }

    /// Prints a back trace on the standard error stream.
    static void printBT();

private:
    std::uint64_t _id = 0;
    std::map<std::string, boost::any> _attributes;
};
