// The imaging stand-in on a fuzzed file: LBitmap loads it from a file in a
// private temporary folder and gives every comment (size, then bytes); the
// file's comments go into the pending table with an artist of our own, and
// the bitmap saves over the file. Then either
//   - the save failed and the file holds exactly the input, or
//   - it succeeded and the file loads again with the artist in place;
// and nothing but the file is left in the folder (no temporary file, no
// backup).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "exif/LeadEXIF.h"
#include "fuzz/ContainerFuzz.h"
#include "host/VLProperty.h"
#include "platform/imaging/CommentNumbers.h"
#include "platform/imaging/ImagingResult.h"
#include "platform/imaging/LBitmap.h"
#include "platform/imaging/LBuffer.h"

namespace {

using namespace vliptc::imaging;
using vliptc::fuzz::Check;

std::vector<std::uint8_t> Comment(const LBitmap& bitmap, unsigned number) {
    const int size = bitmap.ReadComment(number, nullptr);
    Check(size >= 0 && size <= static_cast<int>(kMaxCommentBytes));
    LBuffer buffer;
    Check(buffer.Reallocate(static_cast<unsigned>(size)) == kImagingSuccess);
    Check(bitmap.ReadComment(number, &buffer) == size);
    const unsigned char* bytes = buffer.Lock();
    std::vector<std::uint8_t> out(bytes, bytes + size);
    buffer.Unlock();
    return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string path = vliptc::fuzz::Folder() + "image.jpg";
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
        Check(static_cast<bool>(out));
    }
    LBitmap bitmap;
    const int loaded = bitmap.Load(path);
    Check(loaded == kImagingSuccess || loaded == kImagingNotJpeg || loaded == kImagingBadJpeg);
    if (loaded == kImagingSuccess) {
        for (unsigned number = 0; number < kCommentCount; ++number)
            static_cast<void>(Comment(bitmap, number));
        CVLLeadEXIF lead;  // clears the table when it goes
        Check(lead.ReadComments(bitmap) == 1);
        Check(lead.SetArtist(CVLProperty("fuzz")));
        const int saved = bitmap.Save(path);
        Check(saved == kImagingSuccess || saved == kImagingExifTooLarge);

        std::ifstream in(path, std::ios::binary);
        const std::vector<std::uint8_t> after{std::istreambuf_iterator<char>(in),
                                              std::istreambuf_iterator<char>()};
        if (saved == kImagingSuccess) {
            LBitmap again;
            Check(again.Load(path) == kImagingSuccess);
            Check(Comment(again, kCommentArtist) == std::vector<std::uint8_t>{'f', 'u', 'z', 'z', 0});
        } else {
            Check(after == std::vector<std::uint8_t>(data, data + size));
        }
    }
    std::filesystem::remove(path);
    Check(std::filesystem::is_empty(vliptc::fuzz::Folder()));
    return 0;
}
