// Marker base of classes that must not be copied or moved (nodes, managers,
// handlers: objects with identity).
#pragma once

/// Marker base of classes that must not be copied or moved (nodes, managers, handlers: objects with identity).
class INonCopyable
{
protected:
    INonCopyable() = default;
    ~INonCopyable() = default;

public:
    INonCopyable(const INonCopyable&) = delete;
    INonCopyable& operator=(const INonCopyable&) = delete;
};
