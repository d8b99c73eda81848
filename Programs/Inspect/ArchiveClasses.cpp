#include "Programs/Inspect/ArchiveClasses.h"

#include <algorithm>
#include <iterator>

namespace Inspection {

namespace {

struct ClassShape {
    std::string_view name;
    Shape shape;
};

constexpr ClassShape kShapes[] = {
    {"NSArray",             Shape::kArray     },
    {"NSMutableArray",      Shape::kArray     },
    {"NSSet",               Shape::kSet       },
    {"NSMutableSet",        Shape::kSet       },
    {"NSDictionary",        Shape::kDictionary},
    {"NSMutableDictionary", Shape::kDictionary},
    {"NSString",            Shape::kText      },
    {"NSMutableString",     Shape::kText      },
    {"NSData",              Shape::kData      },
    {"NSMutableData",       Shape::kData      },
    {"NSDate",              Shape::kDate      },
    {"NSNumber",            Shape::kNumber    },
    {"NSNull",              Shape::kNull      },
};

} // namespace

Shape shapeOfClass(std::string_view name) noexcept {
    const auto* const row = std::ranges::find(kShapes, name, &ClassShape::name);
    return row == std::end(kShapes) ? Shape::kRecord : row->shape;
}

} // namespace Inspection
