// A PostgreSQL server for tests: a private cluster in a temporary folder, on a socket there, that
// goes with the object.

#ifndef TESTS_SERVER_H
#define TESTS_SERVER_H

#include <sys/types.h>

#include <string>

#include "Orx.h"

class Server {
  public:
    // Whether PostgreSQL 15 is installed.
    static bool IsInstalled();

    Server();
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    // The one that the tests share; started when it is first asked for.
    static Server& Shared();
    static void StopShared();

    void Start();
    // Ends it at once, as a machine that fails would.
    void Kill();

    std::string Folder() const { return folder_ / "s"; }
    // What names a schema of its database.
    std::string Uri(const std::string& schema) const;

  private:
    void Stop(int signal);

    TemporaryDirectory folder_;
    pid_t process_ = 0;
};

#endif
