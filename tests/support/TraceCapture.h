// Captures the trace while it exists.
//
//     TraceCapture trace;
//     GetMemberCount(list);
//     EXPECT_THAT(trace.Messages("SdaiPrimitiveH GetMemberCount ->"), ElementsAre("Taille3"));

#ifndef TESTS_TRACECAPTURE_H
#define TESTS_TRACECAPTURE_H

#include <unistd.h>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "KORPSNTrace.h"

class TraceCapture {
  public:
    explicit TraceCapture(int level = 12) {
        char path[] = "/tmp/orx-trace-XXXXXX";
        close(mkstemp(path));
        path_ = path;
        KORPSNTrace::Configure(level, path);
    }
    ~TraceCapture() {
        KORPSNTrace::Configure(0, nullptr);
        std::remove(path_.c_str());
    }
    TraceCapture(const TraceCapture&) = delete;
    TraceCapture& operator=(const TraceCapture&) = delete;

    // Every line so far, without its line break.
    std::vector<std::string> Lines() const {
        std::vector<std::string> lines;
        std::ifstream file(path_, std::ios::binary);
        for (std::string line; std::getline(file, line);) lines.push_back(line);
        return lines;
    }

    // The messages that a function wrote: the text after its label and a blank, without the lines
    // that open and close its scope, and without nested calls of other functions.
    std::vector<std::string> Messages(const std::string& label) const {
        std::vector<std::string> messages;
        for (const std::string& line : Lines()) {
            const std::size_t start = line.find_first_not_of(' ');
            if (start == std::string::npos || line.compare(start, label.size(), label) != 0)
                continue;
            std::string message = line.substr(start + label.size());
            if (message == " {" || message == " }" || message.empty()) continue;
            messages.push_back(message.substr(1));
        }
        return messages;
    }

  private:
    std::string path_;
};

#endif
