// A private PostgreSQL server for the tests and the benchmarks: a cluster made
// with initdb in a folder of its own, listening on a Unix socket in that folder
// only (no TCP port), with trust authentication for the role "tessmeta".
//
// The server runs as an unprivileged user when the caller is root (the server
// refuses to run as root): "postgres" when it exists, else "nobody".
#pragma once

#include <memory>
#include <string>

namespace tessmeta::test {

class CPgServer {
  public:
    // Makes a cluster in `dir` (created; an old cluster left there by a killed run
    // is stopped and removed first) and starts it. `durable`: the server's own
    // defaults (fsync, full page writes); otherwise both are off, which is safe
    // for a throw-away cluster and much faster. Null with `error` on failure.
    static std::unique_ptr<CPgServer> Start(const std::string& dir, bool durable,
                                            std::string& error);
    // The same in a fresh temporary folder.
    static std::unique_ptr<CPgServer> StartTemporary(bool durable, std::string& error);
    // A server another process started in `dir` (null when none answers there); it
    // is left running at the end.
    static std::unique_ptr<CPgServer> Attach(const std::string& dir, std::string& error);
    // Stops a server started in `dir` and removes the folder; false with `error`.
    static bool StopIn(const std::string& dir, std::string& error);

    // Stops the server (and removes its folder) if this object started it.
    ~CPgServer();
    CPgServer(const CPgServer&) = delete;
    CPgServer& operator=(const CPgServer&) = delete;

    // The server then outlives this object (StopIn ends it).
    void LeaveRunning() { m_owned = false; }

    const std::string& Dir() const { return m_dir; }
    // A model URI on this server: postgresql:///postgres/<model>?host=<dir>&user=...
    // `params` are added to the query ("application_name=x", ...).
    std::string Uri(const std::string& model, const std::string& params = "") const;
    // A libpq connection string for raw connections.
    std::string ConnInfo() const;

  private:
    CPgServer(std::string dir, bool owned) : m_dir(std::move(dir)), m_owned(owned) {}

    std::string m_dir;
    bool m_owned;
};

}  // namespace tessmeta::test
