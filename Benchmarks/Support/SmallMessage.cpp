#include "Benchmarks/Support/SmallMessage.h"

#include "Benchmarks/Support/Transport.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/KeyedArchiver.h"

#include <stdexcept>
#include <string>

namespace Benchmarks {

namespace {

NS::Ref<NS::Data> archiveOf(const NS::String& path) {
    return NS::KeyedArchiver::archivedDataWithRootObject(NS::Ref<NS::Object>(
        const_cast<NS::String&>(path))); // an archive is of what can be referred to
}

} // namespace

NS::Ref<NS::String> pathOnDrive() {
    std::string path = "/Documents/Holiday pictures/";
    while (archiveOf(NS::str(path + ".jpg"))->length() < kArchiveLength) {
        path += 'p';
    }
    return NS::str(path + ".jpg");
}

NS::Ref<NS::Array> smallMessage() {
    const auto archive = archiveOf(pathOnDrive());
    if (archive->length() != kArchiveLength) {
        throw std::logic_error("the path's archive is not as long as it should be");
    }
    return NS::Array::arrayWithObjects(
        {NS::Data::dataWithBytes(NS::bytesOf("ext_share ")), archive});
}

} // namespace Benchmarks
