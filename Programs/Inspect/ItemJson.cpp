#include "Programs/Inspect/ItemJson.h"

#include "Platform/Foundation/IdentityMap.h"
#include "Platform/Foundation/Set.h"
#include "Programs/Inspect/JsonOutput.h"
#include "Programs/Inspect/PlainValueJson.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace Inspection {

namespace {

// Records are made of a reply, which is a tree no deeper than it may be.
class ItemPrinter {
  public:
    explicit ItemPrinter(JsonOutput& out) : out_(out) {}

    void print(const NS::RefPtr<NS::Object>& object) {
        if (!object) {
            writeNil(out_);
        } else if (!writePlainValue(out_, *object)) {
            printNumbered(*object);
        }
    }

  private:
    void printNumbered(const NS::Object& object) {
        std::uint32_t& number = numbers_.numberOf(&object);
        if (number != 0) {
            return writeReference(out_, number);
        }
        number = ++count_;
        if (const auto* const item = NS::as<QVContentItem>(&object)) {
            printRecord(*item);
        } else if (const auto* const array = NS::as<NS::Array>(&object)) {
            printElements(*array);
        } else if (const auto* const dictionary = NS::as<NS::Dictionary>(&object)) {
            printDictionary(*dictionary);
        } else {
            printDescription(object);
        }
    }

    void printElements(const NS::Array& array) {
        out_.beginArray();
        for (const NS::Ref<NS::Object>& element : array) {
            print(element);
        }
        out_.endArray();
    }

    void printDictionary(const NS::Dictionary& dictionary) {
        out_.beginObject();
        for (const auto& [key, value] : dictionary) {
            writeKey(out_, key->description()->utf8()); // a reply's keys are texts
            print(value);
        }
        out_.endObject();
    }

    void printDescription(const NS::Object& object) {
        out_.beginObject();
        out_.key("$class");
        out_.text(object.objectClass().name);
        out_.key("description");
        out_.text(object.description()->utf8());
        out_.endObject();
    }

    void printRecord(const QVContentItem& item) {
        out_.beginObject();
        out_.key("$class");
        out_.text(item.objectClass().name);
        std::vector<const NS::Property*> shown;
        showProperty(item, *item.objectClass().propertyForKey("timeReceived"), shown);
        const auto archived = QVContentItem::encodeArray(item.contentClass());
        for (const NS::Ref<NS::Object>& key : *archived) {
            showProperty(item, *item.objectClass().propertyForKey(key->description()->utf8()),
                         shown);
        }
        printRest(item, item.objectClass(), shown);
        out_.endObject();
    }

    void showProperty(const QVContentItem& item, const NS::Property& property,
                      std::vector<const NS::Property*>& shown) {
        shown.push_back(&property);
        out_.key(property.key);
        print(property.get(item));
    }

    // What no archive keeps, from the root class on, where there is something.
    void printRest(const QVContentItem& item, const NS::Class& objectClass,
                   const std::vector<const NS::Property*>& shown) {
        if (objectClass.superclass != nullptr) {
            printRest(item, *objectClass.superclass, shown);
        }
        for (const NS::Property& property : objectClass.properties) {
            const auto value = property.get(item);
            if (value && std::ranges::find(shown, &property) == shown.end()) {
                out_.key(property.key);
                print(value);
            }
        }
    }

    JsonOutput& out_;
    NS::IdentityMap numbers_;
    std::uint32_t count_ = 0;
};

} // namespace

void printItem(const NS::Ref<QVContentItem>& item, std::ostream& out) {
    JsonOutput json(out, std::numeric_limits<std::uint64_t>::max());
    ItemPrinter(json).print(item);
    json.finish();
}

} // namespace Inspection
