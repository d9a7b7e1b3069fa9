// The generated JPEG and TIFF files of the benchmark corpus.
//
// What varies with a file's number is a little of the metadata (caption,
// dates, exposure, position) and the image data, drawn from a generator
// seeded by the number; the structure is the same for every file.

#include "bench/corpus/Corpus.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>
#include <string_view>

#include "bench/corpus/ByteWriter.h"
#include "bench/corpus/TiffDirectory.h"

namespace vliptc::bench {

namespace {

// ---------------------------------------------------------------------------
// Image data

// splitmix64: one 64-bit number of state and a few operations per eight
// bytes, so that gigabytes of image data are made in seconds.
class Random {
public:
    explicit Random(std::uint64_t seed) : m_state(seed) {}
    std::uint64_t Next() {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

private:
    std::uint64_t m_state;
};

void FillRandom(std::uint8_t* data, std::size_t size, Random& random) {
    std::size_t at = 0;
    for (; at + 8 <= size; at += 8) {
        const std::uint64_t word = random.Next();
        std::memcpy(data + at, &word, 8);
    }
    const std::uint64_t last = random.Next();
    std::memcpy(data + at, &last, size - at);
}

// Entropy-coded data holds no marker: every 0xFF is followed by a stuffed
// 0x00, and the last byte is not a lone 0xFF.
void FillEntropyCoded(std::uint8_t* data, std::size_t size, Random& random) {
    FillRandom(data, size, random);
    std::uint8_t* const end = data + size;
    for (std::uint8_t* at = data; at < end;) {
        at = static_cast<std::uint8_t*>(std::memchr(at, 0xFF, static_cast<std::size_t>(end - at)));
        if (at == nullptr) break;
        if (at + 1 == end) {
            *at = 0;
            break;
        }
        at[1] = 0;
        at += 2;
    }
}

// ---------------------------------------------------------------------------
// What varies from file to file

struct Shot {
    std::string exifDate;  // "YYYY:MM:DD HH:MM:SS"
    std::string iptcDate;  // "YYYYMMDD"
    std::string caption;
    std::uint32_t exposureDenominator;  // exposure time 1/N s
    std::uint32_t fNumberTenths;
    std::uint16_t iso;
    std::uint32_t focalLength;  // mm
    std::int32_t biasThirds;    // exposure bias in thirds of a stop
    std::uint32_t number;
};

std::string TwoDigits(std::uint32_t value) {
    return std::string(1, static_cast<char>('0' + value / 10 % 10)) + static_cast<char>('0' + value % 10);
}

Shot ShotOf(std::uint32_t n) {
    // Days up to the 28th, so every date is valid in every month.
    const std::string year = std::to_string(2020 + n / 336 % 6);
    const std::string month = TwoDigits(1 + n / 28 % 12);
    const std::string day = TwoDigits(1 + n % 28);
    const std::string time = TwoDigits(n % 24) + ":" + TwoDigits(n * 7 % 60) + ":" + TwoDigits(n * 13 % 60);
    static constexpr std::uint32_t kExposures[] = {30, 60, 125, 250, 500, 1000};
    static constexpr std::uint32_t kApertures[] = {28, 40, 56, 80, 110};
    static constexpr std::uint16_t kIsos[] = {100, 200, 400, 800};
    static constexpr std::uint32_t kFocalLengths[] = {24, 35, 50, 85};
    return Shot{year + ":" + month + ":" + day + " " + time,
                year + month + day,
                "Fishing boats in the harbour at dusk, generated image " + std::to_string(n) + ".",
                kExposures[n % 6],
                kApertures[n % 5],
                kIsos[n % 4],
                kFocalLengths[n % 4],
                static_cast<std::int32_t>(n % 7) - 3,
                n};
}

// ---------------------------------------------------------------------------
// EXIF directories

constexpr std::uint16_t kTagImageWidth = 256;
constexpr std::uint16_t kTagImageLength = 257;
constexpr std::uint16_t kTagStripOffsets = 273;
constexpr std::uint16_t kTagRowsPerStrip = 278;
constexpr std::uint16_t kTagStripByteCounts = 279;
constexpr std::uint16_t kTagThumbnailOffset = 513;  // JPEGInterchangeFormat
constexpr std::uint16_t kTagThumbnailLength = 514;  // JPEGInterchangeFormatLength
constexpr std::uint16_t kTagIptcNaa = 33723;
constexpr std::uint16_t kTagExifIfd = 34665;
constexpr std::uint16_t kTagGpsIfd = 34853;

// The camera's tags of IFD0, shared by the JPEG and the TIFF.
void AddCameraTags(TiffDirectory& ifd0, const Shot& shot) {
    ifd0.Ascii(271, "Corpus Camera")      // Make
        .Ascii(272, "CC-100")             // Model
        .Short(274, {1})                  // Orientation: top/left
        .Rational(282, {{72, 1}})         // XResolution
        .Rational(283, {{72, 1}})         // YResolution
        .Short(296, {2})                  // ResolutionUnit: inches
        .Ascii(305, "bench_make_corpus")  // Software
        .Ascii(306, shot.exifDate)        // DateTime
        .Long(kTagExifIfd, 0)             // set by the layout
        .Long(kTagGpsIfd, 0);
}

// The EXIF directory of both containers; a JPEG adds the tags that describe
// its compressed image.
TiffDirectory ExifDirectory(const Shot& shot) {
    // APEX values: shutter speed log2(1/t), aperture 2 log2(F), in thousandths.
    const auto shutter = static_cast<std::int32_t>(std::lround(std::log2(shot.exposureDenominator) * 1000));
    const auto aperture =
        static_cast<std::uint32_t>(std::lround(2 * std::log2(shot.fNumberTenths / 10.0) * 1000));
    const std::string comment = "Generated image " + std::to_string(shot.number);
    TiffDirectory exif;
    exif.Rational(33434, {{1, shot.exposureDenominator}})           // ExposureTime
        .Rational(33437, {{shot.fNumberTenths, 10}})                // FNumber
        .Short(34850, {2})                                          // ExposureProgram: normal program
        .Short(34855, {shot.iso})                                   // ISOSpeedRatings
        .Undefined(36864, "0230")                                   // ExifVersion
        .Ascii(36867, shot.exifDate)                                // DateTimeOriginal
        .Ascii(36868, shot.exifDate)                                // DateTimeDigitized
        .SignedRational(37377, shutter, 1000)                       // ShutterSpeedValue
        .Rational(37378, {{aperture, 1000}})                        // ApertureValue
        .SignedRational(37380, shot.biasThirds, 3)                  // ExposureBiasValue
        .Short(37383, {5})                                          // MeteringMode: pattern
        .Short(37385, {16})                                         // Flash: off, did not fire
        .Rational(37386, {{shot.focalLength, 1}})                   // FocalLength
        .Undefined(37510, std::string("ASCII\0\0\0", 8) + comment)  // UserComment
        .Undefined(40960, "0100")                                   // FlashpixVersion
        .Short(40961, {1});                                         // ColorSpace: sRGB
    return exif;
}

TiffDirectory GpsDirectory(std::uint32_t n) {
    TiffDirectory gps;
    gps.Byte(0, {2, 3, 0, 0})                                    // GPSVersionID
        .Ascii(1, "N")                                           // GPSLatitudeRef
        .Rational(2, {{62, 1}, {28, 1}, {n * 7 % 6000, 100}})    // GPSLatitude
        .Ascii(3, "E")                                           // GPSLongitudeRef
        .Rational(4, {{6, 1}, {9, 1}, {n * 11 % 6000, 100}})     // GPSLongitude
        .Byte(5, {0})                                            // GPSAltitudeRef: above sea level
        .Rational(6, {{n % 500, 1}})                             // GPSAltitude
        .Undefined(27, std::string_view("ASCII\0\0\0GPS", 11));  // GPSProcessingMethod
    return gps;
}

// "II", 42, first directory at offset 8.
void AppendTiffHeader(Bytes& out) {
    Append(out, {'I', 'I', 42, 0});
    PutLE32(out, 8);
}

// ---------------------------------------------------------------------------
// IPTC

// Record 2 of the IIM: tag marker 0x1C, record, dataset, 16-bit length, value.
Bytes IptcRecord(const Shot& shot) {
    Bytes record;
    const auto dataset = [&record](std::uint8_t id, std::string_view value) {
        Append(record, {0x1C, 0x02, id});
        PutBE16(record, static_cast<std::uint32_t>(value.size()));
        Append(record, value);
    };
    dataset(0, std::string_view("\0\4", 2));  // record version 4
    static constexpr std::string_view kKeywords[] = {"harbour", "boats",      "sea",   "dusk",
                                                     "fishing", "Norway",     "coast", "evening",
                                                     "water",   "reflection", "ships", "pier"};
    for (const std::string_view keyword : kKeywords) dataset(25, keyword);
    dataset(55, shot.iptcDate);               // date created
    dataset(80, "Example Photographer");      // by-line
    dataset(90, "Bergen");                    // city
    dataset(101, "Norway");                   // country
    dataset(105, "Harbour at dusk");          // headline
    dataset(110, "vliptc benchmark corpus");  // credit
    dataset(120, shot.caption);               // caption
    return record;
}

// ---------------------------------------------------------------------------
// JPEG

constexpr std::uint8_t kSOI = 0xD8;
constexpr std::uint8_t kEOI = 0xD9;
constexpr std::uint8_t kAPP0 = 0xE0;
constexpr std::uint8_t kAPP1 = 0xE1;
constexpr std::uint8_t kAPP13 = 0xED;
constexpr std::uint8_t kDQT = 0xDB;
constexpr std::uint8_t kSOF0 = 0xC0;
constexpr std::uint8_t kDHT = 0xC4;
constexpr std::uint8_t kSOS = 0xDA;

// Photoshop image resources: resolution info and the IPTC-NAA record.
constexpr std::uint16_t kResolutionResourceId = 0x03ED;
constexpr std::uint16_t kIptcResourceId = 0x0404;

void AppendMarker(Bytes& out, std::uint8_t marker) { Append(out, {0xFF, marker}); }

void AppendSegment(Bytes& out, std::uint8_t marker, const Bytes& payload) {
    AppendMarker(out, marker);
    PutBE16(out, static_cast<std::uint32_t>(payload.size() + 2));
    Append(out, payload);
}

Bytes JfifPayload() {
    Bytes payload;
    Append(payload, std::string_view("JFIF\0\1\1\1", 8));  // version 1.01, dots per inch
    PutBE16(payload, 72);
    PutBE16(payload, 72);
    Append(payload, {0, 0});  // no JFIF thumbnail
    return payload;
}

// Three components, 4:4:4, one quantisation table, and one DC and one AC
// table of a single one-bit code each (category 0, end of block): enough for
// the thumbnail's flat blocks. The main image's random data is not meant to
// decode.
void AppendImageHeaders(Bytes& out, std::uint32_t width, std::uint32_t height) {
    Bytes dqt(1 + 64, 8);
    dqt[0] = 0x00;  // 8-bit precision, table 0
    AppendSegment(out, kDQT, dqt);
    Bytes sof;
    Append(sof, {8});  // sample precision
    PutBE16(sof, height);
    PutBE16(sof, width);
    Append(sof, {3, 1, 0x11, 0, 2, 0x11, 0, 3, 0x11, 0});
    AppendSegment(out, kSOF0, sof);
    Bytes dht;
    for (const std::uint8_t tableClass : {0x00, 0x10}) {  // DC table 0, AC table 0
        Append(dht, {tableClass, 1});                     // one code of length 1
        dht.resize(dht.size() + 15, 0);
        Append(dht, {0});  // its symbol
    }
    AppendSegment(out, kDHT, dht);
    AppendSegment(out, kSOS, Bytes{3, 1, 0x00, 2, 0x00, 3, 0x00, 0, 63, 0});
}

// A baseline 8x8 JPEG of one grey block: each component's DC difference 0
// and end of block, six 0 bits padded with 1 bits.
Bytes Thumbnail() {
    Bytes out;
    AppendMarker(out, kSOI);
    AppendImageHeaders(out, 8, 8);
    Append(out, {0x03});
    AppendMarker(out, kEOI);
    return out;
}

Bytes ExifPayload(const Shot& shot, std::uint32_t width, std::uint32_t height) {
    TiffDirectory ifd0;
    AddCameraTags(ifd0, shot);
    ifd0.Short(531, {1});  // YCbCrPositioning: centred
    TiffDirectory exif = ExifDirectory(shot);
    exif.Undefined(37121, std::string_view("\1\2\3\0", 4))  // ComponentsConfiguration: Y Cb Cr
        .Long(40962, width)                                 // PixelXDimension
        .Long(40963, height);                               // PixelYDimension
    const TiffDirectory gps = GpsDirectory(shot.number);
    const Bytes thumbnail = Thumbnail();
    TiffDirectory ifd1;
    ifd1.Short(259, {6})  // Compression: JPEG
        .Rational(282, {{72, 1}})
        .Rational(283, {{72, 1}})
        .Short(296, {2})
        .Long(kTagThumbnailOffset, 0)
        .Long(kTagThumbnailLength, static_cast<std::uint32_t>(thumbnail.size()));

    const auto exifAt = static_cast<std::uint32_t>(8 + ifd0.Size());
    const auto gpsAt = static_cast<std::uint32_t>(exifAt + exif.Size());
    const auto ifd1At = static_cast<std::uint32_t>(gpsAt + gps.Size());
    const auto thumbnailAt = static_cast<std::uint32_t>(ifd1At + ifd1.Size());
    ifd0.Long(kTagExifIfd, exifAt).Long(kTagGpsIfd, gpsAt);
    ifd1.Long(kTagThumbnailOffset, thumbnailAt);

    Bytes payload;
    Append(payload, std::string_view("Exif\0\0", 6));
    const std::size_t tiffStart = payload.size();
    AppendTiffHeader(payload);
    ifd0.AppendTo(payload, tiffStart, ifd1At);
    exif.AppendTo(payload, tiffStart, 0);
    gps.AppendTo(payload, tiffStart, 0);
    ifd1.AppendTo(payload, tiffStart, 0);
    Append(payload, thumbnail);
    return payload;
}

// An image resource: signature, id, empty name (a Pascal string padded to
// even length), size, data padded to even length.
void AppendResource(Bytes& out, std::uint16_t id, const Bytes& data) {
    Append(out, "8BIM");
    PutBE16(out, id);
    PutBE16(out, 0);
    PutBE32(out, static_cast<std::uint32_t>(data.size()));
    Append(out, data);
    if (data.size() % 2 != 0) Append(out, {0});
}

Bytes PhotoshopPayload(const Shot& shot) {
    Bytes payload;
    Append(payload, std::string_view("Photoshop 3.0\0", 14));
    // 72 dpi both ways: 16.16 fixed resolution, unit (pixels per inch), display unit (inches).
    Bytes resolution;
    for (int axis = 0; axis < 2; ++axis) {
        PutBE32(resolution, 72u << 16);
        PutBE16(resolution, 1);
        PutBE16(resolution, 1);
    }
    AppendResource(payload, kResolutionResourceId, resolution);
    AppendResource(payload, kIptcResourceId, IptcRecord(shot));
    return payload;
}

// Pixel dimensions for about two bits per pixel, 4:3, in whole blocks.
std::uint32_t JpegWidth(std::size_t size) {
    const double pixels = 4.0 * static_cast<double>(size);
    const auto blocks = static_cast<std::uint32_t>(std::sqrt(pixels * 4 / 3) / 16);
    return std::clamp<std::uint32_t>(blocks, 1, 4000) * 16;
}

}  // namespace

// ---------------------------------------------------------------------------

Bytes MakeJpeg(std::uint32_t number, std::size_t size) {
    const Shot shot = ShotOf(number);
    const std::uint32_t width = JpegWidth(size);
    const std::uint32_t height = std::max<std::uint32_t>(1, width / 16 * 3 / 4) * 16;
    Bytes out;
    AppendMarker(out, kSOI);
    AppendSegment(out, kAPP0, JfifPayload());
    AppendSegment(out, kAPP1, ExifPayload(shot, width, height));
    AppendSegment(out, kAPP13, PhotoshopPayload(shot));
    AppendImageHeaders(out, width, height);
    // At least one byte of scan data, so a size below the headers' still
    // gives a complete file (larger than asked).
    const std::size_t scan = size > out.size() + 3 ? size - out.size() - 2 : 1;
    const std::size_t scanAt = out.size();
    out.resize(scanAt + scan);
    Random random(number);
    FillEntropyCoded(out.data() + scanAt, scan, random);
    AppendMarker(out, kEOI);
    return out;
}

Bytes MakeTiff(std::uint32_t number, std::size_t size) {
    const Shot shot = ShotOf(number);
    TiffDirectory ifd0;
    AddCameraTags(ifd0, shot);
    ifd0.Long(kTagImageWidth, 0)
        .Long(kTagImageLength, 0)
        .Short(258, {8, 8, 8})  // BitsPerSample
        .Short(259, {1})        // Compression: none
        .Short(262, {2})        // PhotometricInterpretation: RGB
        .Long(kTagStripOffsets, 0)
        .Short(277, {3})  // SamplesPerPixel
        .Long(kTagRowsPerStrip, 0)
        .Long(kTagStripByteCounts, 0)
        .Short(284, {1})  // PlanarConfiguration: chunky
        .LongPadded(kTagIptcNaa, IptcRecord(shot));
    const TiffDirectory exif = ExifDirectory(shot);
    const TiffDirectory gps = GpsDirectory(number);
    const std::size_t exifAt = 8 + ifd0.Size();
    const std::size_t gpsAt = exifAt + exif.Size();
    const std::size_t headers = gpsAt + gps.Size();

    // One strip of whole RGB rows about 4:3, ending the file; zeros between
    // the directories and the strip make up the size asked for.
    const std::size_t room = std::max<std::size_t>(size > headers ? size - headers : 0, 3);
    const auto width = static_cast<std::uint32_t>(std::max(1.0, std::sqrt(room / 3.0 * 4 / 3)));
    const auto rows = static_cast<std::uint32_t>(std::max<std::size_t>(1, room / (3u * width)));
    const std::size_t strip = std::size_t{3} * width * rows;
    const std::size_t stripAt = std::max(headers, size - std::min(size, strip));
    ifd0.Long(kTagImageWidth, width)
        .Long(kTagImageLength, rows)
        .Long(kTagStripOffsets, static_cast<std::uint32_t>(stripAt))
        .Long(kTagRowsPerStrip, rows)
        .Long(kTagStripByteCounts, static_cast<std::uint32_t>(strip))
        .Long(kTagExifIfd, static_cast<std::uint32_t>(exifAt))
        .Long(kTagGpsIfd, static_cast<std::uint32_t>(gpsAt));

    Bytes out;
    out.reserve(stripAt + strip);
    AppendTiffHeader(out);
    ifd0.AppendTo(out, 0, 0);
    exif.AppendTo(out, 0, 0);
    gps.AppendTo(out, 0, 0);
    out.resize(stripAt + strip, 0);
    Random random(number);
    FillRandom(out.data() + stripAt, strip, random);
    return out;
}

std::size_t MainJpegSize(std::uint32_t number) {
    constexpr double kSmallest = 150e3;
    constexpr double kLargest = 4e6;
    // 1237 is prime to the count, so the step visits every place once.
    const std::uint32_t place = number * 1237u % kMainJpegCount;
    const double t = static_cast<double>(place) / (kMainJpegCount - 1);
    return static_cast<std::size_t>(std::llround(kSmallest * std::pow(kLargest / kSmallest, t)));
}

}  // namespace vliptc::bench
