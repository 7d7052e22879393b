// Where a model lives on a PostgreSQL server: the connection URI of the server
// backend, split into what libpq connects with and the model's name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zmf {

// True for text that names a model on a server ("postgresql://..." or
// "postgres://..."); anything else is a file path.
bool IsServerUri(std::string_view text);

// A model on a server:
//
//   postgresql://[user[:password]@][host][:port]/database/model[?param=value&...]
//
// The last path segment is the model's name (percent-decoded, so "%2F" puts a
// slash into it); everything else is an ordinary libpq connection URI, parameters
// included (host=/path/to/socket/dir, sslmode=..., options=..., ...). The database
// segment may be empty (libpq's default database).
struct SPgLocation {
    std::string conninfo;              // the URI without the model segment, for libpq
    std::string model;                 // the model's name
    std::string shown;                 // the URI as messages show it: any password replaced by ***
    std::vector<std::string> secrets;  // the password as written and decoded, to scrub
};

// Splits `uri`; false with `error` (which never holds the password) when the text
// is not a model URI.
bool ParsePgLocation(const std::string& uri, SPgLocation& out, std::string& error);

// How messages name a file or a model: file paths as given, URIs without password.
std::string ShownLocation(const std::string& pathOrUri);

// `text` with every occurrence of each secret replaced by ***. Secrets shorter than
// three characters are left alone: scrubbing them would garble the message while
// hiding nothing of worth.
std::string Scrub(std::string text, const std::vector<std::string>& secrets);

}  // namespace zmf
