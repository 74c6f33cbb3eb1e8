// A PostgreSQL server for tests: a private cluster in a temporary folder, with a socket there;
// removed with the object.

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

    // The server that the tests share; started on first use.
    static Server& Shared();
    static void StopShared();

    void Start();
    // Kills it, as a machine failure would.
    void Kill();

    std::string Folder() const { return folder_ / "s"; }
    // The URI of a schema in its database.
    std::string Uri(const std::string& schema) const;

  private:
    void Stop(int signal);

    TemporaryDirectory folder_;
    pid_t process_ = 0;
};

#endif
