// A PostgreSQL server for tests.

#include "Server.h"

#include <libpq-fe.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <thread>

namespace {

const std::string kPrograms = "/usr/lib/postgresql/15/bin/";

// The server does not run as root.
std::vector<std::string> Unprivileged(std::vector<std::string> command) {
    if (geteuid() != 0) return command;
    std::vector<std::string> whole{"/usr/bin/setpriv", "--reuid=nobody", "--regid=nogroup",
                                   "--clear-groups"};
    whole.insert(whole.end(), command.begin(), command.end());
    return whole;
}

pid_t Start(const std::vector<std::string>& command, const std::string& log) {
    std::vector<std::string> whole = Unprivileged(command);
    std::vector<char*> arguments;
    for (std::string& argument : whole) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
    posix_spawn_file_actions_adddup2(&actions, 1, 2);
    posix_spawn_file_actions_addchdir_np(&actions, "/");
    pid_t process = 0;
    char* environment[] = {nullptr};
    const int error =
        posix_spawn(&process, arguments[0], &actions, nullptr, arguments.data(), environment);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::runtime_error("cannot start " + whole[0]);
    return process;
}

std::unique_ptr<Server>& TheServer() {
    static std::unique_ptr<Server> server;
    return server;
}

}  // namespace

bool Server::IsInstalled() { return std::filesystem::exists(kPrograms + "postgres"); }

Server& Server::Shared() {
    if (TheServer() == nullptr) TheServer() = std::make_unique<Server>();
    return *TheServer();
}

void Server::StopShared() { TheServer().reset(); }

Server::Server() {
    // Users other than root need access.
    std::filesystem::permissions(
        folder_.Path(), std::filesystem::perms::owner_all | std::filesystem::perms::others_exec);
    std::filesystem::create_directory(Folder());
    if (geteuid() == 0 && chown(Folder().c_str(), 65534, 65534) != 0) {
        throw std::runtime_error("chown");
    }
    const pid_t initdb =
        ::Start({kPrograms + "initdb", "--pgdata=" + Folder() + "/data", "--username=orx",
                 "--auth=trust", "--encoding=UTF8", "--locale=C.UTF-8", "--no-sync"},
                folder_ / "log");
    int status = 0;
    waitpid(initdb, &status, 0);
    if (status != 0) throw std::runtime_error("initdb: " + ReadFile(folder_ / "log"));
    Start();
}

Server::~Server() { Stop(SIGINT); }

void Server::Start() {
    process_ = ::Start({kPrograms + "postgres", "-D", Folder() + "/data", "-k", Folder(), "-c",
                        "listen_addresses=", "-c", "fsync=off", "-c", "full_page_writes=off"},
                       folder_ / "log");
    for (int i = 0; i < 600; ++i) {
        if (PQping(Uri("public").c_str()) == PQPING_OK) return;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    throw std::runtime_error("the server does not start: " + ReadFile(folder_ / "log"));
}

void Server::Kill() { Stop(SIGQUIT); }

void Server::Stop(int signal) {
    if (process_ == 0) return;
    kill(process_, signal);
    waitpid(process_, nullptr, 0);
    process_ = 0;
}

std::string Server::Uri(const std::string& schema) const {
    return "postgresql://orx@/postgres?host=" + Folder() + "&options=-csearch_path%3D" + schema;
}
