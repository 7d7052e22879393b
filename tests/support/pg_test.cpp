#include "support/pg_test.h"

#include <libpq-fe.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <stdexcept>

namespace tessmeta::test {

CPgServer& TestServer() {
    static std::unique_ptr<CPgServer> server;
    static std::string failure;
    if (!server && failure.empty()) {
        const char* dir = std::getenv("TESSMETA_TEST_PG_DIR");
        std::string ignored;
        server = CPgServer::Attach(dir ? dir : TESSMETA_TEST_PG_DIR, ignored);
        if (!server) server = CPgServer::StartTemporary(false, failure);
    }
    if (!server) throw std::runtime_error("no PostgreSQL server for the tests: " + failure);
    return *server;
}

std::string UniqueModelName(const std::string& stem) {
    static std::atomic<int> counter{0};
    return stem + "_" + std::to_string(::getpid()) + "_" + std::to_string(++counter);
}

std::string NewModelUri(const std::string& stem, const std::string& params) {
    return TestServer().Uri(UniqueModelName(stem), params);
}

std::string ServerSql(const std::string& sql) {
    PGconn* conn = PQconnectdb(TestServer().ConnInfo().c_str());
    std::unique_ptr<PGconn, decltype(&PQfinish)> guard(conn, &PQfinish);
    if (PQstatus(conn) != CONNECTION_OK)
        throw std::runtime_error(std::string("cannot connect: ") + PQerrorMessage(conn));
    PQsetNoticeProcessor(
        conn, [](void*, const char*) {}, nullptr);
    std::unique_ptr<PGresult, decltype(&PQclear)> result(PQexec(conn, sql.c_str()), &PQclear);
    const ExecStatusType status = PQresultStatus(result.get());
    if (status != PGRES_TUPLES_OK && status != PGRES_COMMAND_OK)
        throw std::runtime_error(sql + ": " + PQerrorMessage(conn));
    return status == PGRES_TUPLES_OK && PQntuples(result.get()) && PQnfields(result.get())
               ? PQgetvalue(result.get(), 0, 0)
               : "";
}

}  // namespace tessmeta::test
