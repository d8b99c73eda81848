#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/String.h"

#include <string_view>

namespace NS {

// The name of a resource by the rules of RFC 3986, absolute or relative to a base. Its text is
// ASCII; other bytes stand in it percent-encoded. Never changes; any thread.
class URL final : public Object {
    NS_OBJECT(URL)
  public:
    // The URL of a file. A folder's ends in a slash, which is added when the path leads to one now.
    // The path's bytes are kept as they are, UTF-8 or not. A path that is not absolute is relative
    // to the current folder, which becomes the base.
    static Ref<URL> fileURLWithPath(const String& path);
    // Nil when the text is empty or not well-formed.
    static RefPtr<URL> URLWithString(const String& text);
    static RefPtr<URL> URLWithString_relativeToURL(const String& text, RefPtr<URL> base);

    // The text resolved against the base; the text itself where there is none.
    Ref<String> absoluteString() const;
    Ref<String> relativeString() const { return relative_; }
    // Nil for a URL that stands for itself.
    RefPtr<URL> baseURL() const { return base_; }

    bool isFileURL() const;
    // The path of the resolved URL without percent-encoding and without a slash at its end, which
    // only the root keeps. Empty when there is none.
    Ref<String> path() const;
    Ref<String> lastPathComponent() const { return path()->lastPathComponent(); }

    // The same text on equal bases. Different texts of one resource are not equal.
    bool isEqual(const Object* other) const override;
    std::size_t hash() const override { return relative_->hash(); }
    // The text, and " -- " and the base's description where there is a base.
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;
    void initWithCoder(KeyedUnarchiver& coder) override;

  private:
    template <class T, class... Args>
    friend Ref<T> make(Args&&... args);

    URL();
    URL(Ref<String> relative, RefPtr<URL> base);
    static bool isWellFormed(const String& text);

    Ref<String> relative_;
    RefPtr<URL> base_;
};

} // namespace NS
