// The PostgreSQL server of a test run, and what tests need to use it.
#pragma once

#include <string>

#include "pg_server/pg_server.h"

namespace tessmeta::test {

// The server of this test run: the one the CTest fixture started for this build
// tree (or the one in the folder named by the TESSMETA_TEST_PG_DIR environment
// variable), or else one started for this process and stopped when it exits.
// Throws (failing the calling test) when none can be had.
CPgServer& TestServer();

// A model name that no other test, in this or a parallel process, uses.
std::string UniqueModelName(const std::string& stem);

// A URI of a new model name on the test server (`params` as for CPgServer::Uri).
std::string NewModelUri(const std::string& stem, const std::string& params = "");

// Runs SQL on the test server through a connection of its own (as another user
// would); returns the first value of the last result, or throws.
std::string ServerSql(const std::string& sql);

}  // namespace tessmeta::test
