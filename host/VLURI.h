#pragma once

#include <string>

// The address of a catalogued file as the host engine gives it out: a URI
// text ("file:///photos/harbour%20at%20dusk.jpg") and the local path it
// stands for. Hosts fill it through CVLEngine::GetFileURI.
class CVLURI {
public:
    CVLURI() = default;
    explicit CVLURI(std::string uri) : m_uri(std::move(uri)) {}
    CVLURI(const CVLURI&) = default;
    CVLURI& operator=(const CVLURI&) = default;
    virtual ~CVLURI() = default;

    void SetString(std::string uri) { m_uri = std::move(uri); }

    // The URI text as given; it is what log lines name.
    virtual std::string AsString() const { return m_uri; }

    // The local path of a "file:" URI whose host part is empty or
    // "localhost", with its percent escapes decoded ("%20" -> " "); an escape
    // that is not two hex digits stays as it is. Empty for any other URI.
    virtual std::string WindowsPath() const;

    // The "file://" URI of an absolute local path. Bytes other than letters,
    // digits, "-._~" and "/" are escaped, so every path comes back unchanged
    // from WindowsPath.
    static CVLURI FromPath(const std::string& path);

private:
    std::string m_uri;
};
