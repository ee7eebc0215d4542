#pragma once

#include <memory>

namespace vantro {

template <auto Free>
struct GiveBack {
    template <class T>
    void operator()(T* object) const noexcept
    {
        Free(object);
    }
};

// Owns what a C library made, and gives it back by that library's own function for it, which is not called
// for null: Owned<GError, g_error_free>, Owned<CURLU, curl_url_cleanup>.
template <class T, auto Free>
using Owned = std::unique_ptr<T, GiveBack<Free>>;

} // namespace vantro
