#include "QVFinderExtension/Testing/LinkFixture.h"

namespace Tests {

namespace {

constexpr NS::Method kMethods[] = {
    NS::method<&LinkRecorder::nothing>("nothing"),
    NS::method<&LinkRecorder::received>("received:"),
    NS::method<&LinkRecorder::receivedFrom>("received:from:"),
    NS::method<&LinkRecorder::receivedPort>("receivedPort:"),
};

} // namespace

constinit const NS::Class LinkRecorder::kClass{
    .name = "LinkRecorder", .superclass = &NS::Object::kClass, .methods = kMethods};

} // namespace Tests
