#include "zmflib/pg_uri.h"

namespace zmf {
namespace {

constexpr std::string_view kSchemes[] = {"postgresql://", "postgres://"};
constexpr const char* kForm = "postgresql://[user[:password]@]host[:port]/database/model";
constexpr std::size_t kMaxModelName = 200;

int HexValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// Percent-decodes `text`; false on a malformed escape.
bool Decode(std::string_view text, std::string& out) {
    out.clear();
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        const int hi = i + 2 < text.size() ? HexValue(text[i + 1]) : -1;
        const int lo = hi >= 0 ? HexValue(text[i + 2]) : -1;
        if (lo < 0) return false;
        out += static_cast<char>(hi * 16 + lo);
        i += 2;
    }
    return true;
}

void AddSecret(SPgLocation& out, std::string_view raw) {
    if (raw.empty()) return;
    out.secrets.emplace_back(raw);
    std::string decoded;
    if (Decode(raw, decoded) && decoded != raw) out.secrets.push_back(decoded);
}

}  // namespace

bool IsServerUri(std::string_view text) {
    for (std::string_view scheme : kSchemes)
        if (text.substr(0, scheme.size()) == scheme) return true;
    return false;
}

bool ParsePgLocation(const std::string& uri, SPgLocation& out, std::string& error) {
    out = SPgLocation();
    const std::size_t schemeEnd = uri.find("://");
    if (!IsServerUri(uri) || schemeEnd == std::string::npos) {
        error = std::string("not a server URI (expected ") + kForm + ")";
        return false;
    }
    const std::string scheme = uri.substr(0, schemeEnd + 3);
    const std::string rest = uri.substr(schemeEnd + 3);
    const std::size_t queryAt = rest.find('?');
    const std::string body = rest.substr(0, queryAt);
    const std::string query = queryAt == std::string::npos ? "" : rest.substr(queryAt + 1);

    // Authority (user, password, hosts) up to the first slash of the path.
    const std::size_t pathAt = body.find('/');
    const std::size_t modelSlash = body.rfind('/');
    if (pathAt == std::string::npos || modelSlash == pathAt) {
        error = std::string("the URI names no model (expected ") + kForm + ")";
        return false;
    }
    if (body.find('/', pathAt + 1) != modelSlash) {
        error = std::string("the URI's path has more than a database and a model (expected ") +
                kForm + "; write a slash in a model name as %2F)";
        return false;
    }
    const std::string authority = body.substr(0, pathAt);
    const std::string database = body.substr(pathAt, modelSlash - pathAt);
    if (!Decode(std::string_view(body).substr(modelSlash + 1), out.model)) {
        error = "the model name has a malformed %-escape";
        return false;
    }
    if (out.model.empty()) {
        error = std::string("the URI names no model (expected ") + kForm + ")";
        return false;
    }
    if (out.model.find('\0') != std::string::npos || out.model.size() > kMaxModelName) {
        error = "a model name is 1 to " + std::to_string(kMaxModelName) +
                " bytes without NUL characters";
        return false;
    }

    // Passwords, in the user information or as a parameter, are never shown.
    std::string shownAuthority = authority;
    const std::size_t at = authority.rfind('@');
    if (at != std::string::npos) {
        const std::size_t colon = authority.find(':');
        if (colon < at) {
            AddSecret(out, std::string_view(authority).substr(colon + 1, at - colon - 1));
            shownAuthority = authority.substr(0, colon) + ":***" + authority.substr(at);
        }
    }
    std::string shownQuery;
    for (std::size_t start = 0; start <= query.size() && !query.empty();) {
        std::size_t end = query.find('&', start);
        if (end == std::string::npos) end = query.size();
        std::string param = query.substr(start, end - start);
        if (param.rfind("password=", 0) == 0) {
            AddSecret(out, std::string_view(param).substr(9));
            param = "password=***";
        }
        shownQuery += (shownQuery.empty() ? "" : "&") + param;
        start = end + 1;
    }

    const std::string tail = query.empty() ? "" : "?" + query;
    const std::string shownTail = query.empty() ? "" : "?" + shownQuery;
    out.conninfo = scheme + authority + database + tail;
    out.shown = scheme + shownAuthority + body.substr(pathAt) + shownTail;
    return true;
}

std::string ShownLocation(const std::string& pathOrUri) {
    if (!IsServerUri(pathOrUri)) return pathOrUri;
    SPgLocation location;
    std::string error;
    if (ParsePgLocation(pathOrUri, location, error)) return location.shown;
    // Not a well-formed model URI: show neither a user information nor parameters,
    // either of which may hold a password.
    const std::size_t schemeEnd = pathOrUri.find("://") + 3;
    std::string shown = pathOrUri.substr(0, pathOrUri.find('?'));
    const std::size_t at = shown.rfind('@');
    if (at != std::string::npos && at >= schemeEnd)
        shown = shown.substr(0, schemeEnd) + "***" + shown.substr(at);
    return shown.size() < pathOrUri.size() ? shown + "?..." : shown;
}

std::string Scrub(std::string text, const std::vector<std::string>& secrets) {
    for (const std::string& secret : secrets) {
        if (secret.size() < 3) continue;
        for (std::size_t at = text.find(secret); at != std::string::npos;
             at = text.find(secret, at + 3))
            text.replace(at, secret.size(), "***");
    }
    return text;
}

}  // namespace zmf
