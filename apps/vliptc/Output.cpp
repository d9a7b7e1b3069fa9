// Printing field lists as text and as JSON.

#include "apps/vliptc/Output.h"

#include "apps/vliptc/Context.h"

namespace vliptc::cli {

namespace {

// IPTC text keeps CR LF line breaks; a lone CR or LF counts as one too.
std::string OneLine(const std::string& text) {
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' || text[i] == '\n') {
            out += "\\n";
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}

}  // namespace

std::string FieldLines(const FieldNames& names, const CIPTC::FieldList& fields) {
    std::string out;
    for (const auto& item : fields) {
        if (item.vValues.empty()) continue;
        out += names.Name(item.nID);
        out += '\t';
        for (std::size_t i = 0; i < item.vValues.size(); ++i) {
            if (i > 0) out += "; ";
            out += OneLine(ToUtf8(item.vValues[i].String()));
        }
        out += '\n';
    }
    return out;
}

nlohmann::ordered_json FieldsJson(const FieldNames& names, const CIPTC::FieldList& fields) {
    nlohmann::ordered_json out = nlohmann::ordered_json::array();
    for (const auto& item : fields) {
        if (item.vValues.empty()) continue;
        nlohmann::ordered_json values = nlohmann::ordered_json::array();
        for (const auto& value : item.vValues) values.push_back(ToUtf8(value.String()));
        out.push_back({{"id", item.nID}, {"name", names.Name(item.nID)}, {"values", std::move(values)}});
    }
    return out;
}

std::string JsonText(const nlohmann::ordered_json& value) {
    return value.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace vliptc::cli
