#include "editors/sheet/FixedChoices.h"

#include <cctype>
#include <cstdlib>

namespace vliptc::editors {

namespace {

constexpr std::array<const char*, 3> kObjectCycleWritten = {"m", "p", "b"};

}  // namespace

int PriorityEntry(std::string_view stored) {
    // Read as atoi reads it: leading digits, nothing usable is 0 ("None").
    const int number = std::atoi(std::string(stored).c_str());
    return number >= 0 && number < static_cast<int>(kPriorityEntries.size()) ? number : -1;
}

std::string PriorityValue(int entry) {
    if (entry <= 0 || entry >= static_cast<int>(kPriorityEntries.size())) return {};
    return std::to_string(static_cast<unsigned>(entry));
}

int ObjectCycleEntry(std::string_view stored) {
    std::string lowered(stored);
    for (char& c : lowered) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lowered == "p") return 1;
    if (lowered == "b") return 2;
    return 0;  // "a", and anything else, leave the list on its first entry
}

std::string ObjectCycleValue(int entry) {
    if (entry < 0 || entry >= static_cast<int>(kObjectCycleWritten.size())) return {};
    return kObjectCycleWritten[static_cast<std::size_t>(entry)];
}

}  // namespace vliptc::editors
