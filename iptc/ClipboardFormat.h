#pragma once

// The two forms in which a whole IPTC record travels between editing runs:
// a private binary form that only this library reads back (the editors'
// clipboard, the command line's clipboard file), and a text form for people
// and other programs.
//
// Binary form, every number least-significant byte first, nothing between
// the parts, no checksum, no total length, no padding:
//
//   2  format version, always 1
//   4  number of fields
//   per field, in store order:
//     4  dataset number (SIPTCItem::nID)
//     4  number of values
//        each value in the property stream form (kind byte, 32-bit payload
//        length, payload; see host/VLProperty.h)
//
// Fields without values are carried too: they are part of the store's
// layout, so a paste gives back exactly the list that was copied. A store
// whose field list is empty gives six bytes: version 1 and a count of 0.
//
// Text form: one line per field of the store, in store order: the field's
// display name, a tab, its values in their string form separated by single
// tabs, then CR LF. A field without values is its name and a tab. The text is
// Windows-1252 like the stored values; the clipboard ends it with one zero
// byte (the C string terminator), so an empty field list gives nothing but
// that byte.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::clipboard {

inline constexpr std::uint16_t kFormatVersion = 1;

// The binary form of fields. Throws CVLException when a value cannot be
// streamed (a payload over the property limit) or the whole form would pass
// vliptc::limits::kMaxClipboardBytes: what the decoder refuses is never
// written.
std::vector<std::uint8_t> EncodeBinary(const CIPTC::FieldList& fields);

enum class DecodeStatus {
    kOk,
    kOtherVersion,  // a version word other than 1: not ours to read
    kMalformed,     // too short, counts that exceed the data, a bad value, over the size cap
};

struct DecodeResult {
    DecodeStatus status = DecodeStatus::kMalformed;
    std::uint16_t version = 0;  // as read; 0 when there were not two bytes
    std::size_t consumed = 0;   // bytes the record took (kOk only)
};

// Reads the binary form. Fields are replaced only on kOk and left alone
// otherwise. Bytes behind the last field are ignored: a platform clipboard
// may hand back a block rounded up beyond what was put on it.
[[nodiscard]] DecodeResult DecodeBinary(std::span<const std::uint8_t> data, CIPTC::FieldList& fields);

// The display name of a dataset: its descriptor's NAME; "Record Version" for
// dataset 0 and "Dataset N" for others that the definitions do not describe.
std::string DisplayName(const CIPTC& store, std::uint32_t id);

// The text form of the store's field list, without the terminating zero byte.
std::string EncodeText(const CIPTC& store);

}  // namespace vliptc::clipboard
