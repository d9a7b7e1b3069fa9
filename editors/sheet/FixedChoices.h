#pragma once

// The two fixed lists of the image-information page and how they map to the
// stored values.
//
// Priority (dataset 10): "None", then "1 High" to "8 Low". An entry is
// written as its position in decimal ("5 Medium" is 5), "None" and no
// selection as nothing; a stored number selects the entry at that position.
//
// Object cycle (dataset 75): "Morning", "Evening", "Both", written as "m", "p"
// and "b". Reading lowers the value and takes "a" for the morning, "p" and "b"
// for the others; anything else leaves the first entry. The reader has always
// taken "a" where the writer puts "m"; a written "m" still reads as "Morning"
// because that is the first entry, so both stay as they are.

#include <array>
#include <string>
#include <string_view>

namespace vliptc::editors {

inline constexpr std::array<const char*, 9> kPriorityEntries = {"None",     "1 High", "2", "3",    "4",
                                                                "5 Medium", "6",      "7", "8 Low"};
inline constexpr std::array<const char*, 3> kObjectCycleEntries = {"Morning", "Evening", "Both"};

// The entry a stored value selects; -1 for none.
int PriorityEntry(std::string_view stored);
// The value an entry is stored as; "" for "None" and for no entry (-1).
std::string PriorityValue(int entry);

int ObjectCycleEntry(std::string_view stored);
std::string ObjectCycleValue(int entry);

}  // namespace vliptc::editors
