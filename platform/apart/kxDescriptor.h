#pragma once

#include <unistd.h>

/// A descriptor of a file or pipe, closed at the end.
class kxDescriptor
{
public:
    explicit kxDescriptor(int descriptor = -1) : _descriptor(descriptor) {}
    ~kxDescriptor() { close(); }
    kxDescriptor(const kxDescriptor&) = delete;
    kxDescriptor& operator=(const kxDescriptor&) = delete;

    int get() const { return _descriptor; }
    bool isOpen() const { return _descriptor >= 0; }
    void set(int descriptor)
    {
        close();
        _descriptor = descriptor;
    }
    void close()
    {
        if (isOpen())
            ::close(_descriptor);
        _descriptor = -1;
    }

private:
    int _descriptor;
};
