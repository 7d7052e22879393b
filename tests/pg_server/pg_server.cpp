#include "pg_server/pg_server.h"

#include <fcntl.h>
#include <grp.h>
#include <libpq-fe.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

namespace tessmeta::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kRole = "tessmeta";
constexpr const char* kDatabase = "postgres";
constexpr const char* kSocketFile = ".s.PGSQL.5432";

// The folder of the server programs: TESSMETA_PG_BINDIR, else the newest
// /usr/lib/postgresql/<major>/bin (Debian's layout), else the PATH.
std::string BinDir() {
    if (const char* dir = std::getenv("TESSMETA_PG_BINDIR")) return dir;
    std::vector<std::pair<int, std::string>> found;
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator("/usr/lib/postgresql", ec)) {
        const fs::path bin = entry.path() / "bin";
        if (fs::exists(bin / "initdb", ec))
            found.emplace_back(std::atoi(entry.path().filename().c_str()), bin.string());
    }
    if (found.empty()) return "";
    return std::max_element(found.begin(), found.end())->second;
}

std::string Program(const char* name) {
    const std::string dir = BinDir();
    return dir.empty() ? name : dir + "/" + name;
}

// The account the server runs under when we are root.
struct SAccount {
    uid_t uid = 0;
    gid_t gid = 0;
    bool drop = false;
};

SAccount ServerAccount() {
    SAccount account;
    if (::geteuid() != 0) return account;
    for (const char* name : {"postgres", "nobody"}) {
        if (const passwd* pw = ::getpwnam(name)) {
            account = {pw->pw_uid, pw->pw_gid, true};
            break;
        }
    }
    return account;
}

// Runs a program (as the server account) with its output appended to `log`;
// returns its exit status, or -1 when it could not be run.
int Run(const std::vector<std::string>& args, const SAccount& account, const std::string& log) {
    const pid_t pid = ::fork();
    if (pid < 0) return -1;
    if (pid == 0) {
        // The log is opened as the server account, which writes to it later too.
        if (account.drop && (::setgroups(0, nullptr) != 0 || ::setgid(account.gid) != 0 ||
                             ::setuid(account.uid) != 0))
            ::_exit(126);
        const int fd = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
        if (fd >= 0) {
            ::dup2(fd, 1);
            ::dup2(fd, 2);
            ::close(fd);
        }
        const int null = ::open("/dev/null", O_RDONLY);
        if (null >= 0) ::dup2(null, 0);
        std::vector<char*> argv;
        for (const std::string& a : args)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        ::execvp(argv[0], argv.data());
        ::_exit(127);
    }
    int status = 0;
    while (::waitpid(pid, &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

std::string Tail(const std::string& log) {
    std::ifstream in(log);
    std::stringstream text;
    text << in.rdbuf();
    std::string all = text.str();
    return all.size() > 1500 ? all.substr(all.size() - 1500) : all;
}

std::string DataDir(const std::string& dir) {
    return dir + "/data";
}

}  // namespace

std::unique_ptr<CPgServer> CPgServer::Start(const std::string& dir, bool durable,
                                            std::string& error) {
    std::error_code ec;
    if (fs::exists(DataDir(dir), ec)) {
        std::string ignored;
        StopIn(dir, ignored);
    }
    fs::create_directories(dir, ec);
    if (ec) {
        error = dir + ": cannot create: " + ec.message();
        return nullptr;
    }
    const SAccount account = ServerAccount();
    if (account.drop && ::chown(dir.c_str(), account.uid, account.gid) != 0) {
        error = dir + ": cannot hand the folder to the server account";
        return nullptr;
    }
    const std::string log = dir + "/server.log";
    const std::string initdb = Program("initdb");
    if (Run({initdb, "-D", DataDir(dir), "-U", kRole, "--auth=trust", "-E", "UTF8", "--locale=C",
             "--no-sync"},
            account, log) != 0) {
        error = "initdb failed (is Debian's postgresql package installed? " + initdb + "):\n" +
                Tail(log);
        fs::remove_all(dir, ec);
        return nullptr;
    }
    std::string options = "-k " + dir + " -c listen_addresses= -c max_connections=60";
    if (!durable) options += " -c fsync=off -c full_page_writes=off -c synchronous_commit=off";
    if (Run({Program("pg_ctl"), "-D", DataDir(dir), "-l", log, "-w", "-t", "60", "-o", options,
             "start"},
            account, log) != 0) {
        error = "the PostgreSQL server did not start:\n" + Tail(log);
        std::string ignored;
        StopIn(dir, ignored);
        return nullptr;
    }
    return std::unique_ptr<CPgServer>(new CPgServer(dir, true));
}

std::unique_ptr<CPgServer> CPgServer::StartTemporary(bool durable, std::string& error) {
    std::string pattern = (fs::temp_directory_path() / "tessmeta-pg-XXXXXX").string();
    if (!::mkdtemp(pattern.data())) {
        error = "cannot make a temporary folder";
        return nullptr;
    }
    return Start(pattern, durable, error);
}

std::unique_ptr<CPgServer> CPgServer::Attach(const std::string& dir, std::string& error) {
    std::unique_ptr<CPgServer> server(new CPgServer(dir, false));
    std::error_code ec;
    if (!fs::exists(dir + "/" + kSocketFile, ec) ||
        PQping(server->ConnInfo().c_str()) != PQPING_OK) {
        error = dir + ": no PostgreSQL server listens here";
        return nullptr;
    }
    return server;
}

bool CPgServer::StopIn(const std::string& dir, std::string& error) {
    std::error_code ec;
    bool ok = true;
    if (fs::exists(DataDir(dir) + "/postmaster.pid", ec)) {
        const std::string log = dir + "/server.log";
        ok = Run({Program("pg_ctl"), "-D", DataDir(dir), "-m", "immediate", "-w", "stop"},
                 ServerAccount(), log) == 0;
        if (!ok) error = "the PostgreSQL server did not stop:\n" + Tail(log);
    }
    fs::remove_all(dir, ec);
    return ok;
}

CPgServer::~CPgServer() {
    if (!m_owned) return;
    std::string ignored;
    StopIn(m_dir, ignored);
}

std::string CPgServer::Uri(const std::string& model, const std::string& params) const {
    return std::string("postgresql:///") + kDatabase + "/" + model + "?host=" + m_dir +
           "&user=" + kRole + (params.empty() ? "" : "&" + params);
}

std::string CPgServer::ConnInfo() const {
    return "host=" + m_dir + " user=" + kRole + " dbname=" + kDatabase;
}

}  // namespace tessmeta::test
