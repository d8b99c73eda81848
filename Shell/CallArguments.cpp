#include "Shell/CallArguments.h"

#include "Shell/FileURL.h"
#include "Shell/FinderInterface.h"

#include <string_view>
#include <utility>
#include <vector>

namespace Shell {

namespace {

constexpr const char* kMalformed = "the message is malformed";

// Keeps a message, and with it the bytes in it.
class KeptMessage final : public NS::Object {
  public:
    explicit KeptMessage(sd_bus_message* message) noexcept
        : message_(sd_bus_message_ref(message)) {}
    ~KeptMessage() override { sd_bus_message_unref(message_); }

  private:
    sd_bus_message* message_;
};

} // namespace

template <char type, class Value>
Value CallArguments::basic(Value value) {
    if (sd_bus_message_read_basic(call_, type, &value) <= 0) {
        fail(kMalformed);
    }
    return value;
}

std::uint64_t CallArguments::number() {
    return basic<SD_BUS_TYPE_UINT64>(std::uint64_t{0});
}

bool CallArguments::flag() {
    return basic<SD_BUS_TYPE_BOOLEAN>(0) != 0;
}

const char* CallArguments::text() {
    const char* const text = basic<SD_BUS_TYPE_STRING>(static_cast<const char*>(nullptr));
    return text == nullptr ? "" : text;
}

NS::RefPtr<NS::URL> CallArguments::fileURL() {
    auto url = fileURLFromText(text());
    if (!url) {
        fail("a file URL is wanted: file:///, then percent-encoded bytes");
    }
    return url;
}

std::string_view CallArguments::bytes() {
    const void* bytes = nullptr;
    std::size_t size = 0;
    if (sd_bus_message_read_array(call_, SD_BUS_TYPE_BYTE, &bytes, &size) < 0) {
        fail(kMalformed);
        return {};
    }
    return {static_cast<const char*>(bytes), size};
}

MenuRequest CallArguments::place() {
    std::string_view given = bytes();
    MenuRequest request;
    if (given.size() < 2 || given.front() != FinderInterface::kPlaceForm) {
        fail("the place is of another form");
        return request;
    }
    request.kind = FI::MenuKind{static_cast<unsigned char>(given[1])};
    given.remove_prefix(2);
    const std::size_t targetEnd = given.find('\0');
    if (targetEnd == std::string_view::npos) {
        fail("the target has no NUL behind it");
        return request;
    }
    request.target = targetOf(given.substr(0, targetEnd));
    request.selection = selectionOf(given.substr(targetEnd + 1));
    return request;
}

NS::RefPtr<FI::Selection> CallArguments::selectionOf(std::string_view paths) {
    auto selection = FI::Selection::selectionWithPaths(
        NS::Data::dataWithBytesNoCopy(NS::bytesOf(paths), NS::make<KeptMessage>(call_)));
    if (!selection) {
        fail("the selection is not absolute paths with a NUL behind each");
    }
    return selection;
}

NS::RefPtr<NS::URL> CallArguments::targetOf(std::string_view path) {
    if (path.empty()) {
        return nullptr;
    }
    if (path.front() != '/') {
        fail("the target is neither an absolute path nor empty");
        return nullptr;
    }
    return NS::URL::fileURLWithFileSystemRepresentation(path);
}

NS::RefPtr<NS::URL> CallArguments::fileURLOrNone() {
    const std::string_view given = text();
    if (given.empty()) {
        return nullptr;
    }
    auto url = fileURLFromText(given);
    if (!url) {
        fail("the target is neither a file URL nor empty");
    }
    return url;
}

NS::RefPtr<FI::Selection> CallArguments::fileURLs() {
    std::vector<NS::Ref<NS::Object>> urls;
    const char* text = nullptr;
    if (sd_bus_message_enter_container(call_, SD_BUS_TYPE_ARRAY, "s") < 0) {
        fail(kMalformed);
    }
    int more = 0;
    while ((more = sd_bus_message_read_basic(call_, SD_BUS_TYPE_STRING, &text)) > 0) {
        const auto url = fileURLFromText(text);
        if (!url) {
            fail("item " + std::to_string(urls.size() + 1) + " of the selection is no file URL");
            break;
        }
        urls.emplace_back(*url);
    }
    if (error_.empty() && (more < 0 || sd_bus_message_exit_container(call_) < 0)) {
        fail(kMalformed);
    }
    return FI::Selection::selectionWithURLs(NS::make<NS::Array>(std::move(urls)));
}

void CallArguments::fail(std::string error) {
    if (error_.empty()) {
        error_ = std::move(error);
    }
}

} // namespace Shell
