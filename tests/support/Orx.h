// Runs programs, above all `orx`, like a user.

#ifndef TESTS_ORX_H
#define TESTS_ORX_H

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

extern char** environ;

// A directory that is removed with the object, and files in it.
class TemporaryDirectory {
  public:
    TemporaryDirectory() {
        char path[] = "/tmp/orx-test-XXXXXX";
        path_ = mkdtemp(path);
    }
    ~TemporaryDirectory() { std::system(("rm -rf " + path_).c_str()); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

    const std::string& Path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

    // Writes a file and returns its path.
    std::string Write(const std::string& name, const std::string& content) const {
        std::ofstream(*this / name, std::ios::binary) << content;
        return *this / name;
    }

  private:
    std::string path_;
};

inline std::string ReadFile(const std::string& path) {
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

struct OrxResult {
    int status;  // the exit status; 128 + n for signal n
    std::string out;
    std::string err;
};

// Runs a program with the arguments. Environment variables are given as NAME=VALUE and replace
// those of the test.
inline OrxResult RunProgram(std::string program, std::vector<std::string> arguments,
                            const std::string& input = "", const std::string& directory = "",
                            const std::vector<std::string>& environment = {}) {
    const TemporaryDirectory files;
    const std::string in = files.Write("in", input);
    const std::string out = files / "out";
    const std::string err = files / "err";
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, in.c_str(), O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, 1, out.c_str(), O_WRONLY | O_CREAT, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, err.c_str(), O_WRONLY | O_CREAT, 0600);
    if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());

    std::vector<char*> argv{program.data()};
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);
    std::vector<std::string> variables = environment;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string name = std::string(*variable).substr(0, std::string(*variable).find('='));
        bool replaced = false;
        for (const std::string& own : environment) replaced |= own.rfind(name + "=", 0) == 0;
        if (!replaced) variables.emplace_back(*variable);
    }
    std::vector<char*> envp;
    for (std::string& variable : variables) envp.push_back(variable.data());
    envp.push_back(nullptr);

    pid_t process = 0;
    const int error =
        posix_spawn(&process, program.c_str(), &actions, nullptr, argv.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) return {-1, "", program + " cannot be started"};
    int status = 0;
    waitpid(process, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), ReadFile(out),
            ReadFile(err)};
}

inline OrxResult RunOrx(std::vector<std::string> arguments, const std::string& input = "",
                        const std::string& directory = "",
                        const std::vector<std::string>& environment = {}) {
    return RunProgram(ORX_PROGRAM, std::move(arguments), input, directory, environment);
}

#endif
