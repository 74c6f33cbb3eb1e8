// An expected trace: calls with their lines and nested calls, in order.
//
//     TraceCapture trace;
//     GetRepFromProperty(representation);
//     EXPECT_THAT(trace.Lines(), ElementsAreArray(LinesOf(
//         Call("GetRepFromProperty", {Call("GetInst", {"GetInst sur l'entite:", ...})}))));

#ifndef TESTS_TRACETREE_H
#define TESTS_TRACETREE_H

#include <string>
#include <string_view>
#include <vector>

#include "ORXExportTable.h"

// A line, or a call of a function of the export table.
struct TraceEntry {
    TraceEntry(const char* line) : text(line) {}
    TraceEntry(std::string line) : text(std::move(line)) {}
    TraceEntry(std::string_view label, std::vector<TraceEntry> lines)
        : text(label), isCall(true), entries(std::move(lines)) {}

    // The lines that it produces in a scope with that label and indentation.
    void AppendTo(std::vector<std::string>& lines, const std::string& label,
                  std::size_t indent) const {
        const std::string blanks(indent, ' ');
        if (!isCall) {
            lines.push_back(blanks + label + ' ' + text);
            return;
        }
        lines.push_back(blanks + text + " {");
        for (const TraceEntry& entry : entries) entry.AppendTo(lines, text, indent + 3);
        lines.push_back(blanks + text + " }");
    }

    std::string text;  // of a line, or the label of a call
    bool isCall = false;
    std::vector<TraceEntry> entries;
};

inline TraceEntry Call(std::string_view function, std::vector<TraceEntry> entries = {}) {
    return {orx::FindExport(function)->label, std::move(entries)};
}

inline std::vector<std::string> LinesOf(const TraceEntry& call) {
    std::vector<std::string> lines;
    call.AppendTo(lines, {}, 0);
    return lines;
}

#endif
