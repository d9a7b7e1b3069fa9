#include "tests/tiffpsd/MiniJson.h"

#include <cctype>
#include <string>

namespace vliptc::test {

const Json* Json::Find(std::string_view key) const {
    for (const auto& [name, value] : members) {
        if (name == key) return &value;
    }
    return nullptr;
}

namespace {

void PutUtf8(std::string& out, unsigned long code) {
    const int extra = code < 0x80 ? 0 : code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    static const unsigned char kLead[] = {0x00, 0xC0, 0xE0, 0xF0};
    out += static_cast<char>(kLead[extra] | (code >> (6 * extra)));
    for (int i = extra - 1; i >= 0; --i) out += static_cast<char>(0x80 | ((code >> (6 * i)) & 0x3F));
}

struct Parser {
    std::string_view text;
    std::size_t pos = 0;

    void Skip() {
        while (pos < text.size() && std::isspace(static_cast<unsigned char>(text[pos]))) ++pos;
    }
    bool Eat(char c) {
        Skip();
        if (pos >= text.size() || text[pos] != c) return false;
        ++pos;
        return true;
    }
    unsigned long Hex4() {
        const std::string digits(text.substr(pos, 4));
        pos += digits.size();
        return std::stoul(digits, nullptr, 16);
    }
    std::optional<std::string> String() {
        if (!Eat('"')) return std::nullopt;
        std::string out;
        while (pos < text.size() && text[pos] != '"') {
            const char c = text[pos++];
            if (c != '\\' || pos >= text.size()) {
                out += c;
                continue;
            }
            const char e = text[pos++];
            if (e == 'u') {
                unsigned long code = Hex4();
                if (code >= 0xD800 && code < 0xDC00 && text.substr(pos, 2) == "\\u") {
                    pos += 2;
                    code = 0x10000 + ((code - 0xD800) << 10) + (Hex4() - 0xDC00);
                }
                PutUtf8(out, code);
            } else {
                out += e == 'n'   ? '\n'
                       : e == 'r' ? '\r'
                       : e == 't' ? '\t'
                       : e == 'b' ? '\b'
                       : e == 'f' ? '\f'
                                  : e;
            }
        }
        return Eat('"') ? std::optional(out) : std::nullopt;
    }
    std::optional<Json> Value() {
        Skip();
        Json json;
        if (pos >= text.size()) return std::nullopt;
        if (text[pos] == '"') {
            auto s = String();
            if (!s) return std::nullopt;
            json.kind = Json::Kind::kString;
            json.text = *s;
            return json;
        }
        if (text[pos] == '{' || text[pos] == '[') {
            const bool object = text[pos++] == '{';
            json.kind = object ? Json::Kind::kObject : Json::Kind::kArray;
            const char close = object ? '}' : ']';
            if (Eat(close)) return json;
            do {
                std::optional<std::string> key;
                if (object && (!(key = String()) || !Eat(':'))) return std::nullopt;
                auto value = Value();
                if (!value) return std::nullopt;
                if (object)
                    json.members.emplace_back(*key, std::move(*value));
                else
                    json.items.push_back(std::move(*value));
            } while (Eat(','));
            return Eat(close) ? std::optional(json) : std::nullopt;
        }
        const std::size_t start = pos;
        while (pos < text.size() && (std::isalnum(static_cast<unsigned char>(text[pos])) ||
                                     std::string_view("+-.").find(text[pos]) != std::string_view::npos))
            ++pos;
        json.text = std::string(text.substr(start, pos - start));
        json.kind = json.text == "null"                           ? Json::Kind::kNull
                    : json.text == "true" || json.text == "false" ? Json::Kind::kBool
                                                                  : Json::Kind::kNumber;
        return json.text.empty() ? std::nullopt : std::optional(json);
    }
};

}  // namespace

std::optional<Json> ParseJson(std::string_view text) { return Parser{text}.Value(); }

}  // namespace vliptc::test
