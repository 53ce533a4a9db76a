// How the folder operations turn store failures into their one error path:
// a failing HRESULT, or a null interface where one is required (E_POINTER),
// becomes a ComError that the catch-all around each operation logs.
#pragma once

#include <windows.h>

namespace velk::actions {

struct ComError {
    HRESULT hr;
};

inline void ThrowIfFailed(HRESULT hr) {
    if (FAILED(hr))
        throw ComError{hr};
}

template <class Ptr>
void ThrowIfNull(const Ptr& p) {
    if (!p)
        throw ComError{E_POINTER};
}

}  // namespace velk::actions
