#include "kolib/update/UtcTime.h"

#include "base/NumberWithin.h"

#include <chrono>
#include <cstdio>

namespace corvane {

namespace chrono = std::chrono;

std::optional<std::int64_t> ReadUtc(std::string_view text) {
    constexpr std::string_view form = "dddd-dd-ddTdd:dd:ddZ";
    if (text.size() != form.size())
        return std::nullopt;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool digit = text[i] >= '0' && text[i] <= '9';
        if (form[i] == 'd' ? !digit : text[i] != form[i])
            return std::nullopt;
    }
    const auto number = [text](std::size_t at, std::size_t length, int highest) {
        return NumberWithin<int>(text.substr(at, length), 0, highest);
    };
    const auto year = number(0, 4, 9999);
    const auto month = number(5, 2, 12);
    const auto day = number(8, 2, 31);
    const auto hour = number(11, 2, 23);
    const auto minute = number(14, 2, 59);
    const auto second = number(17, 2, 59);
    if (!year || !month || !day || !hour || !minute || !second)
        return std::nullopt;
    const chrono::year_month_day date{chrono::year(*year),
                                      chrono::month(static_cast<unsigned>(*month)),
                                      chrono::day(static_cast<unsigned>(*day))};
    if (!date.ok())
        return std::nullopt;
    const chrono::seconds time = chrono::sys_days(date).time_since_epoch() + chrono::hours(*hour) +
                                 chrono::minutes(*minute) + chrono::seconds(*second);
    return time.count();
}

std::string WriteUtc(std::int64_t seconds) {
    const chrono::sys_seconds time{chrono::seconds(seconds)};
    const auto day = chrono::floor<chrono::days>(time);
    const chrono::year_month_day date(day);
    const chrono::hh_mm_ss clock(time - day);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ",
                  static_cast<int>(date.year()), static_cast<unsigned>(date.month()),
                  static_cast<unsigned>(date.day()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()),
                  static_cast<int>(clock.seconds().count()));
    return text;
}

std::int64_t UtcNow() {
    return chrono::duration_cast<chrono::seconds>(chrono::system_clock::now().time_since_epoch())
        .count();
}

} // namespace corvane
