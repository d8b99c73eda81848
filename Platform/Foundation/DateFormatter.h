#pragma once

#include "Platform/Foundation/Date.h"
#include "Platform/Foundation/String.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace NS {

// Renders dates by a pattern in local time. Letters are fields of the Unicode date notation (UTS
// #35): yyyy MM dd HH mm ss, and S for tenths, SS for hundredths, SSS for thousandths of a second,
// which are cut off, not rounded. Text between apostrophes, and what is no letter, stands for
// itself.
//
// A second is rendered once and kept. A change of the TZ variable shows at once, one of the
// machine's time zone with the next second. Any thread.
class DateFormatter {
  public:
    // Raises NSInvalidArgumentException for a field that it does not know.
    explicit DateFormatter(std::string_view pattern);
    ~DateFormatter();
    DateFormatter(const DateFormatter&) = delete;
    DateFormatter& operator=(const DateFormatter&) = delete;

    Ref<String> stringFromDate(const Date& date);
    // Appends the rendered date to a text.
    void appendDate(double timeIntervalSinceReferenceDate, std::string& text);

  private:
    struct Piece {
        char field; // 0 for literal text
        std::size_t width;
        std::string literal;
    };
    struct Rendered;

    void parse(std::string_view pattern);
    void render(std::int64_t second);

    std::vector<Piece> pieces_;
    std::unique_ptr<Rendered> rendered_;
};

} // namespace NS
