// libexif holds the EXIF data while comments are taken out of it or put into
// it. Its loader is told to keep tags it does not know and not to "fix" the
// data to the standard (which would add made-up tags), so a save changes
// nothing but the comments' tags.

#include "platform/imaging/internal/ExifComments.h"

#include <libexif/exif-data.h>
#include <libexif/exif-entry.h>
#include <libexif/exif-mem.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "platform/imaging/internal/JpegLayout.h"

namespace vliptc::imaging {

namespace {

// One comment number that a save embeds: the tag it becomes.
struct EmbeddedTag {
    unsigned number;
    ExifIfd ifd;
    ExifTag tag;
    ExifFormat format;
};

constexpr EmbeddedTag kEmbeddedTags[] = {
    {kCommentArtist, EXIF_IFD_0, EXIF_TAG_ARTIST, EXIF_FORMAT_ASCII},
    {kCommentCopyright, EXIF_IFD_0, EXIF_TAG_COPYRIGHT, EXIF_FORMAT_ASCII},
    {kCommentDateTime, EXIF_IFD_0, EXIF_TAG_DATE_TIME, EXIF_FORMAT_ASCII},
    {kCommentImageDescription, EXIF_IFD_0, EXIF_TAG_IMAGE_DESCRIPTION, EXIF_FORMAT_ASCII},
    {kCommentMake, EXIF_IFD_0, EXIF_TAG_MAKE, EXIF_FORMAT_ASCII},
    {kCommentModel, EXIF_IFD_0, EXIF_TAG_MODEL, EXIF_FORMAT_ASCII},
    {kCommentSoftware, EXIF_IFD_0, EXIF_TAG_SOFTWARE, EXIF_FORMAT_ASCII},
    {kCommentDocumentName, EXIF_IFD_0, EXIF_TAG_DOCUMENT_NAME, EXIF_FORMAT_ASCII},
    {kCommentDateTimeOriginal, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_ORIGINAL, EXIF_FORMAT_ASCII},
    {kCommentDateTimeDigitized, EXIF_IFD_EXIF, EXIF_TAG_DATE_TIME_DIGITIZED, EXIF_FORMAT_ASCII},
    {kCommentSubSecTime, EXIF_IFD_EXIF, EXIF_TAG_SUB_SEC_TIME, EXIF_FORMAT_ASCII},
    {kCommentSubSecTimeOriginal, EXIF_IFD_EXIF, EXIF_TAG_SUB_SEC_TIME_ORIGINAL, EXIF_FORMAT_ASCII},
    {kCommentSubSecTimeDigitized, EXIF_IFD_EXIF, EXIF_TAG_SUB_SEC_TIME_DIGITIZED, EXIF_FORMAT_ASCII},
    {kCommentUserComment, EXIF_IFD_EXIF, EXIF_TAG_USER_COMMENT, EXIF_FORMAT_UNDEFINED},
    {kCommentImageUniqueID, EXIF_IFD_EXIF, EXIF_TAG_IMAGE_UNIQUE_ID, EXIF_FORMAT_ASCII},
};

struct MemRelease {
    void operator()(ExifMem* mem) const noexcept { exif_mem_unref(mem); }
};
struct DataRelease {
    void operator()(ExifData* data) const noexcept { exif_data_unref(data); }
};
struct EntryRelease {
    void operator()(ExifEntry* entry) const noexcept { exif_entry_unref(entry); }
};
using MemPtr = std::unique_ptr<ExifMem, MemRelease>;
using DataPtr = std::unique_ptr<ExifData, DataRelease>;
using EntryPtr = std::unique_ptr<ExifEntry, EntryRelease>;

// EXIF data as libexif reads it from payload (nothing read when empty), with
// every tag kept as the file has it.
DataPtr LoadExif(ExifMem* mem, std::span<const std::uint8_t> payload) {
    DataPtr data(exif_data_new_mem(mem));
    if (!data) return data;
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_IGNORE_UNKNOWN_TAGS);
    exif_data_unset_option(data.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    if (!payload.empty()) {
        // An APP1 payload never exceeds 65,533 bytes, so its size fits.
        exif_data_load_data(data.get(), payload.data(), static_cast<unsigned>(payload.size()));
    }
    return data;
}

// Drops every entry of tag from content (libexif adds a tag only once).
void RemoveTag(ExifContent* content, ExifTag tag) {
    while (ExifEntry* old = exif_content_get_entry(content, tag)) exif_content_remove_entry(content, old);
}

// Puts bytes into content as the only entry of tag; false when memory ran out.
bool PutEntry(ExifMem* mem, ExifContent* content, ExifTag tag, ExifFormat format,
              std::span<const std::uint8_t> bytes) {
    EntryPtr entry(exif_entry_new_mem(mem));
    if (!entry) return false;
    // ASCII values end in a zero byte.
    const bool terminate = format == EXIF_FORMAT_ASCII && bytes.back() != 0;
    const auto size = static_cast<unsigned>(bytes.size() + (terminate ? 1 : 0));
    entry->data = static_cast<unsigned char*>(exif_mem_alloc(mem, size));  // zeroed
    if (entry->data == nullptr) return false;
    std::copy(bytes.begin(), bytes.end(), entry->data);
    entry->tag = tag;
    entry->format = format;
    entry->components = size;  // both formats have one-byte components
    entry->size = size;
    RemoveTag(content, tag);
    exif_content_add_entry(content, entry.get());
    return true;
}

// The EXIF directory must state its version; a new one says 2.1, as
// libexif's default entry does.
void EnsureExifVersion(ExifMem* mem, ExifContent* exif) {
    if (exif->count == 0 || exif_content_get_entry(exif, EXIF_TAG_EXIF_VERSION) != nullptr) return;
    EntryPtr entry(exif_entry_new_mem(mem));
    if (!entry) return;
    entry->tag = EXIF_TAG_EXIF_VERSION;
    exif_content_add_entry(exif, entry.get());
    exif_entry_initialize(entry.get(), EXIF_TAG_EXIF_VERSION);
}

}  // namespace

CommentSet ReadExifComments(std::span<const std::uint8_t> payload) {
    CommentSet comments;
    const MemPtr mem(exif_mem_new_default());
    if (!mem) return comments;
    const DataPtr data = LoadExif(mem.get(), payload);
    if (!data) return comments;
    for (const EmbeddedTag& embedded : kEmbeddedTags) {
        const ExifEntry* entry = exif_content_get_entry(data->ifd[embedded.ifd], embedded.tag);
        if (entry == nullptr || entry->data == nullptr || entry->size > kMaxCommentBytes) continue;
        comments[embedded.number].assign(entry->data, entry->data + entry->size);
    }
    return comments;
}

bool HasEmbeddedComment(const CommentSet& comments) {
    return std::any_of(std::begin(kEmbeddedTags), std::end(kEmbeddedTags),
                       [&](const EmbeddedTag& embedded) { return !comments[embedded.number].empty(); });
}

std::optional<std::vector<std::uint8_t>> BuildExifPayload(std::span<const std::uint8_t> payload,
                                                          const CommentSet& comments) {
    const MemPtr mem(exif_mem_new_default());
    if (!mem) return std::nullopt;
    const DataPtr data = LoadExif(mem.get(), payload);
    if (!data) return std::nullopt;
    for (const EmbeddedTag& embedded : kEmbeddedTags) {
        const auto& comment = comments[embedded.number];
        if (comment.empty()) continue;
        if (!PutEntry(mem.get(), data->ifd[embedded.ifd], embedded.tag, embedded.format, comment)) {
            return std::nullopt;
        }
    }
    EnsureExifVersion(mem.get(), data->ifd[EXIF_IFD_EXIF]);

    unsigned char* saved = nullptr;
    unsigned savedSize = 0;
    exif_data_save_data(data.get(), &saved, &savedSize);
    std::optional<std::vector<std::uint8_t>> result;
    if (saved != nullptr && savedSize <= kMaxSegmentPayloadBytes) result.emplace(saved, saved + savedSize);
    exif_mem_free(mem.get(), saved);
    return result;
}

}  // namespace vliptc::imaging
