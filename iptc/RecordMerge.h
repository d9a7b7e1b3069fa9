#pragma once

// How an edited record goes into the record of each file of a batch: the
// write mode decides field by field whether the edit or the file's value
// stands, and the keyword mode how keywords, category and supplemental
// categories combine. The IPTC editor's write pass and "vliptc iptc apply"
// both merge this way.

#include <cstdint>
#include <string>
#include <vector>

#include "iptc/IPTC.h"

namespace vliptc::iptc {

// Write modes.
constexpr int kWriteReplace = 0;   // every edited field overwrites the file's
constexpr int kWriteModified = 1;  // only fields the user changed are written
constexpr int kWriteKeep = 2;      // a field is written only where the file's is missing or empty

// Keyword modes (keywords, category, supplemental categories).
constexpr int kKeywordsUnchanged = 0;  // the file's values stay
constexpr int kKeywordsReplace = 1;    // the edited values replace the file's
constexpr int kKeywordsMerge = 2;      // edited values the file lacks are appended

// Datasets 25 (keywords), 15 (category) and 20 (supplemental categories).
bool IsKeywordLike(std::uint32_t id);

// Equal lists hold the same number of values; a single value must compare
// equal, several are compared without regard to their order (as multisets).
bool SameValues(const std::vector<CVLProperty>& a, const std::vector<CVLProperty>& b);

struct MergeOptions {
    int writeMode = kWriteReplace;
    int keywordMode = kKeywordsReplace;
    // The file the edit was made on: it receives every edited field as shown.
    bool isTemplateFile = false;
    // The edit goes to this one file only: the same.
    bool onlyFile = false;
};

enum class FieldAction {
    kKeep,      // the file's value stays
    kSet,       // SetField with the edited values
    kKeywords,  // MergeKeywords with the keyword mode
};

// What becomes of one edited field in the file whose record the store holds.
// templateRecord is the template file's record as read, before the edit. The
// first rule that applies wins:
//   template file, or the only file            -> kSet
//   replace                                    -> kSet (keyword mode not consulted)
//   keep: keyword-like                         -> kKeywords
//         the file has a value that is not ""  -> kKeep, else kSet
//   modified: the file has the field and the template record holds it with
//         the same values (untouched)          -> kKeep
//         keyword-like                         -> kKeywords
//         some edited value is not ""          -> kSet, else kKeep (a field
//         the user emptied is not cleared in other files)
//   any other write mode                       -> kKeep
FieldAction DecideField(const CIPTC::SIPTCItem& edited, const CIPTC::FieldList& templateRecord,
                        const CIPTC& store, const MergeOptions& options);

// One keyword-like field: unchanged leaves the file's values; replace sets
// the edited ones; merge appends each edited value that the list (growing as
// it goes) does not hold yet. Other modes leave the field.
void MergeKeywords(const CIPTC::SIPTCItem& edited, CIPTC& store, int keywordMode);

// Every field of the edited record, in order, by DecideField.
void MergeRecord(const CIPTC::FieldList& edited, const CIPTC::FieldList& templateRecord, CIPTC& store,
                 const MergeOptions& options);

// The file that a write to path changes: path itself, or for a ".CRW" the
// ".thm" companion that carries its IPTC data (path when there is none).
std::string WrittenFile(const std::string& path);

}  // namespace vliptc::iptc
