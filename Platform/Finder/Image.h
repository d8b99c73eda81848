#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <utility>

namespace NS {

// A picture among the program's resources, by its name. Never changes; any thread.
class Image final : public Object {
    NS_OBJECT(Image)
  public:
    // The image resource of that name; nil when the program has none. Looked up afresh each time.
    static RefPtr<Image> imageNamed(const String& name);

    const Ref<String>& name() const noexcept { return name_; }
    // The file that holds it: an absolute path.
    const Ref<String>& path() const noexcept { return path_; }

    // For make().
    Image(Ref<String> name, Ref<String> path) : name_(std::move(name)), path_(std::move(path)) {}

  private:
    Ref<String> name_;
    Ref<String> path_;
};

} // namespace NS
