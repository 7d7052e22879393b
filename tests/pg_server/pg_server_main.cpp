// Starts and stops the private PostgreSQL server that a test run shares (the
// CTest fixture): tessmeta_pg_server start|stop DIR.
#include <cstdio>
#include <cstring>
#include <string>

#include "pg_server/pg_server.h"

int main(int argc, char** argv) {
    if (argc != 3 || (std::strcmp(argv[1], "start") != 0 && std::strcmp(argv[1], "stop") != 0)) {
        std::fprintf(stderr, "usage: %s start|stop DIR\n", argv[0]);
        return 2;
    }
    std::string error;
    if (std::strcmp(argv[1], "stop") == 0) {
        if (tessmeta::test::CPgServer::StopIn(argv[2], error)) return 0;
    } else if (auto server = tessmeta::test::CPgServer::Start(argv[2], false, error)) {
        // The server outlives this program: the fixture's stop ends it.
        server->LeaveRunning();
        std::printf("PostgreSQL server running in %s\n", argv[2]);
        return 0;
    }
    std::fprintf(stderr, "%s\n", error.c_str());
    return 1;
}
