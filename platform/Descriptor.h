#pragma once

#include <unistd.h>
#include <utility>

namespace vantro {

// Owns an open file descriptor, or none (-1).
class Descriptor {
public:
    explicit Descriptor(int number = -1) : number_(number) { }
    ~Descriptor()
    {
        if (number_ >= 0)
            close(number_);
    }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) { }
    Descriptor& operator=(Descriptor&& other) noexcept
    {
        std::swap(number_, other.number_);
        return *this;
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    [[nodiscard]] int Number() const { return number_; }
    [[nodiscard]] bool IsOpen() const { return number_ >= 0; }

private:
    int number_;
};

} // namespace vantro
