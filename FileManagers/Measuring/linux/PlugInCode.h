#pragma once

namespace FileManagers::Measuring {

// Whether a function is one of a plug-in of ours that this process has loaded.
bool isOfPlugIn(const void* function) noexcept;

template <class R, class... A>
bool isOfPlugIn(R (*function)(A...)) noexcept {
    return isOfPlugIn(reinterpret_cast<const void*>(function));
}

// The function of that name, without which the process would be none of a file manager, that is
// called where this library is not loaded.
void* nextFunction(const char* name) noexcept;

template <class Function>
Function* next(const char* name) noexcept {
    return reinterpret_cast<Function*>(nextFunction(name));
}

} // namespace FileManagers::Measuring
