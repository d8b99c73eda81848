#include "FileManagers/Measuring/linux/PlugInCode.h"

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <link.h>

namespace FileManagers::Measuring {

bool isOfPlugIn(const void* function) noexcept {
    dl_find_object found{};
    return ::_dl_find_object(const_cast<void*>(function), &found) == 0 &&
           std::strstr(found.dlfo_link_map->l_name, "/libquorvane-") != nullptr;
}

void* nextFunction(const char* name) noexcept {
    void* const function = ::dlsym(RTLD_NEXT, name);
    if (function == nullptr) {
        std::abort();
    }
    return function;
}

} // namespace FileManagers::Measuring
