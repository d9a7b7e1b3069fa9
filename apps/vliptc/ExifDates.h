#pragma once

// Dates and times given to the EXIF commands.

#include <string>
#include <string_view>

#include "host/OleDateTime.h"

namespace vliptc::cli {

struct ExifDate {
    std::string text;  // the EXIF form, "YYYY:MM:DD HH:MM:SS"
    COleDateTime when;
};

// A date and time given as "YYYY:MM:DD HH:MM:SS" (the EXIF form),
// "YYYY-MM-DD HH:MM:SS" or "YYYY-MM-DDTHH:MM:SS", naming a real day and a
// time of day. UsageError, naming the option it was given for, otherwise.
ExifDate ParseExifDate(std::string_view given, std::string_view option);

}  // namespace vliptc::cli
