#include "apps/vliptc/ExifDates.h"

#include <charconv>

#include "apps/vliptc/Context.h"

namespace vliptc::cli {

ExifDate ParseExifDate(std::string_view given, std::string_view option) {
    // The date part may be separated by ":" or "-", the time by " " or "T".
    constexpr std::string_view kShape = "dddd:dd:dd dd:dd:dd";
    bool ok = given.size() == kShape.size() && (given[4] == ':' || given[4] == '-') && given[7] == given[4] &&
              (given[10] == ' ' || given[10] == 'T');
    for (std::size_t i = 0; ok && i < kShape.size(); ++i) {
        const bool digit = given[i] >= '0' && given[i] <= '9';
        ok = kShape[i] == 'd' ? digit : (i == 4 || i == 7 || i == 10 || given[i] == kShape[i]);
    }
    int fields[6] = {};
    constexpr std::size_t kStarts[6] = {0, 5, 8, 11, 14, 17};
    for (std::size_t i = 0; ok && i < 6; ++i) {
        const char* first = given.data() + kStarts[i];
        std::from_chars(first, first + (i == 0 ? 4 : 2), fields[i]);
    }
    ExifDate date;
    if (!ok || date.when.SetDateTime(fields[0], fields[1], fields[2], fields[3], fields[4], fields[5]) != 0) {
        throw UsageError(std::string(option) + ": not a date and time: \"" + std::string(given) +
                         "\" (give YYYY:MM:DD HH:MM:SS or YYYY-MM-DD HH:MM:SS)");
    }
    date.text = std::string(given);
    date.text[4] = date.text[7] = ':';
    date.text[10] = ' ';
    return date;
}

}  // namespace vliptc::cli
