#pragma once

#include "Platform/Foundation/Object.h"
#include "Platform/Foundation/Property.h"
#include "Platform/Foundation/String.h"

namespace NS {

// A URL, possibly relative to another. Never changes; any thread.
class URL final : public Object {
    NS_OBJECT(URL)
  public:
    // The file URL of an absolute path; a relative one is taken from the current folder. The path
    // of a folder that exists gets a slash at its end. Every byte that a URL does not hold as it
    // stands is percent-encoded, also in names that are not UTF-8. Raises
    // NSInvalidArgumentException for nil.
    static Ref<URL> fileURLWithPath(const RefPtr<String>& path);
    // The file URL of an absolute path in the bytes of the file system, which is not looked at: it
    // is taken as it stands.
    static Ref<URL> fileURLWithFileSystemRepresentation(std::string_view path);
    // Nil for text that no URL can be.
    static RefPtr<URL> URLWithString(const String& text);
    static RefPtr<URL> URLWithString_relativeToURL(const String& text, RefPtr<URL> base);

    // The text that it was made of.
    const Ref<String>& relativeString() const noexcept { return text_; }
    const RefPtr<URL>& baseURL() const noexcept { return base_; }
    // The whole URL, resolved against its base (RFC 3986, section 5.2).
    Ref<String> absoluteString() const;

    bool isFileURL() const;
    // The path, decoded, without a slash at its end unless it is the root; nil where there is none.
    RefPtr<String> path() const;

    // The same text and equal bases.
    bool isEqual(const Object* other) const override;
    std::size_t hash() const override;
    // The text, and " -- " and the base where there is one.
    Ref<String> description() const override;
    void encodeWithCoder(KeyedArchiver& coder) const override;

    // For make(): text that has been checked.
    URL(Ref<String> text, RefPtr<URL> base) noexcept;

  private:
    RefPtr<String> decodedPath() const;

    Ref<String> text_;
    RefPtr<URL> base_;
    mutable AtomicRef<String> path_; // once somebody has asked
};

} // namespace NS
