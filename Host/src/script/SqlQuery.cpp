// Runs queries in SQL and prints their rows.

#include "script/SqlQuery.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Connection.h"
#include "ExchangeText.h"
#include "console/Console.h"
#include "console/Display.h"
#include "console/Json.h"
#include "script/Interrupt.h"

namespace host {

namespace {

struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Prepared = std::unique_ptr<sqlite3_stmt, Finalize>;

// Where a place in a text is that begins at `start`.
Place PlaceIn(std::string_view text, std::size_t offset, Place start) {
    const std::string_view before = text.substr(0, offset);
    const std::size_t lineStart = before.rfind('\n');
    if (lineStart == std::string_view::npos) return {start.line, start.column + offset};
    const auto lines = std::count(before.begin(), before.end(), '\n');
    return {start.line + static_cast<std::uint64_t>(lines), offset - lineStart};
}

std::string_view TextAt(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    if (text == nullptr) throw std::bad_alloc();
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(statement, column))};
}

std::string BytesAt(sqlite3_stmt* statement, int column) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    const auto* bytes = static_cast<const unsigned char*>(sqlite3_column_blob(statement, column));
    std::string text = "X'";
    for (int i = 0; i < sqlite3_column_bytes(statement, column); ++i) {
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 0xF];
    }
    return text + '\'';
}

// As few digits as read back as the same number.
std::string RealText(double value) {
    if (std::isfinite(value)) return Json().Real(value).Line();
    std::string name;
    exchange::AppendReal(name, value);
    return name;
}

// NULL is an empty field.
std::string FieldAt(sqlite3_stmt* statement, int column, Form form) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL: return "";
        case SQLITE_FLOAT: return RealText(sqlite3_column_double(statement, column));
        case SQLITE_BLOB: return BytesAt(statement, column);
        case SQLITE_TEXT:
            if (form == Form::Box) return Readable(TextAt(statement, column));
            [[fallthrough]];
        default: return std::string(TextAt(statement, column));
    }
}

void WriteField(Json& json, sqlite3_stmt* statement, int column) {
    switch (sqlite3_column_type(statement, column)) {
        case SQLITE_NULL: json.Null(); break;
        case SQLITE_INTEGER: json.Integer(sqlite3_column_int64(statement, column)); break;
        case SQLITE_FLOAT: json.Real(sqlite3_column_double(statement, column)); break;
        case SQLITE_BLOB: json.Text(BytesAt(statement, column)); break;
        default: json.Text(TextAt(statement, column));
    }
}

// Writes the rows of a statement.
class Rows {
  public:
    Rows(sqlite3_stmt* statement, Form form)
        : statement_(statement), form_(form), columns_(form, Names(statement)) {}

    // Without rows the headers say what there is none of.
    void End() {
        if (sqlite3_column_count(statement_) != 0) columns_.Begin();
    }

    void Write() {
        const int count = sqlite3_column_count(statement_);
        if (form_ == Form::Json) {
            Json json;
            json.Object([&] {
                for (int i = 0; i < count; ++i) {
                    json.Name(sqlite3_column_name(statement_, i));
                    WriteField(json, statement_, i);
                }
            });
            std::cout << json.Line() << '\n';
            return;
        }
        std::vector<std::string> fields;
        fields.reserve(static_cast<std::size_t>(count));
        for (int i = 0; i < count; ++i) fields.push_back(FieldAt(statement_, i, form_));
        columns_.Add(std::move(fields));
    }

  private:
    static std::vector<std::string> Names(sqlite3_stmt* statement) {
        std::vector<std::string> names;
        for (int i = 0; i < sqlite3_column_count(statement); ++i) {
            const char* name = sqlite3_column_name(statement, i);
            if (name == nullptr) throw std::bad_alloc();
            names.push_back(Readable(name));
        }
        return names;
    }

    sqlite3_stmt* statement_;
    const Form form_;
    Columns columns_;
};

[[noreturn]] void Fail(sqlite3* database, int status, Place place) {
    if ((status & 0xFF) == SQLITE_NOMEM) throw std::bad_alloc();
    if (status == SQLITE_INTERRUPT) ThrowIfInterrupted();
    throw ScriptError(place, sqlite3_errmsg(database));
}

// The name of the missing table, from the message of SQLite; empty for any other failure.
std::string_view MissingTable(std::string_view message) {
    constexpr std::string_view kStart = "no such table: ";
    if (!message.starts_with(kStart)) return {};
    message.remove_prefix(kStart.size());
    return message.substr(message.rfind('.') + 1);  // 0 where there is no model before it
}

int IsInterrupted(void*) {
    try {
        ThrowIfInterrupted();
        return 0;
    } catch (const Interrupted&) {
        NoteInterrupt();
        return 1;
    }
}

}  // namespace

SqlSession::SqlSession(Session& session, const calls::Module& module) : session_(session) {
    if (sqlite3_open(":memory:", &database_) != SQLITE_OK) {
        sqlite3_close(database_);
        throw std::bad_alloc();
    }
    try {
        connection_ = sql::Connect(database_, module);
    } catch (...) {
        sqlite3_close(database_);
        throw;
    }
    // Looked at now and then while a statement runs.
    constexpr int kSteps = 10'000;
    sqlite3_progress_handler(database_, kSteps, IsInterrupted, nullptr);
}

SqlSession::~SqlSession() { sqlite3_close(database_); }

void SqlSession::AddModels() {
    for (; modelCount_ < session_.Models().size(); ++modelCount_) {
        const NamedModel& model = session_.Models()[modelCount_];
        // It stays with the session.
        const std::shared_ptr<const kor::Model> borrowed(std::shared_ptr<void>(), &model.Model());
        try {
            sql::AddModel(*connection_, NameToUtf8(model.name), borrowed);
        } catch (const std::runtime_error& error) {
            Refuse(std::string(error.what()) + " (name models with NAME=...)");
        }
    }
}

void SqlSession::Run(std::string_view text, Place start, Form form) {
    AddModels();
    // SQLite takes it for the end of the text.
    const std::size_t end = text.find('\0');
    if (end != std::string_view::npos) {
        throw ScriptError(PlaceIn(text, end, start), "U+0000 cannot stand in a query");
    }
    for (std::size_t at = 0; at < text.size();) {
        const std::size_t first = text.find_first_not_of(" \t\r\n", at);
        if (first == std::string_view::npos) return;
        sqlite3_stmt* made = nullptr;
        const char* rest = nullptr;
        const int status = sqlite3_prepare_v2(database_, text.data() + first,
                                              static_cast<int>(text.size() - first), &made, &rest);
        const Prepared prepared(made);
        if (status != SQLITE_OK) FailToPrepare(status, text, first, start);
        at = static_cast<std::size_t>(rest - text.data());
        if (made == nullptr) continue;  // a remark
        Rows rows(made, form);
        for (;;) {
            const int step = sqlite3_step(made);
            if (step == SQLITE_DONE) break;
            if (step != SQLITE_ROW) Fail(database_, step, PlaceIn(text, first, start));
            rows.Write();
            ThrowIfInterrupted();
        }
        rows.End();
    }
}

void SqlSession::FailToPrepare(int status, std::string_view text, std::size_t first,
                               Place start) const {
    const std::string_view missing = MissingTable(sqlite3_errmsg(database_));
    if (missing.empty()) {
        const auto offset = static_cast<std::size_t>(std::max(0, sqlite3_error_offset(database_)));
        Fail(database_, status, PlaceIn(text, first + offset, start));
    }
    const auto known = [this] {
        std::vector<std::string> names;
        for (const NamedModel& model : session_.Models()) {
            for (std::string& name : sql::TableNames(model.Model())) {
                names.push_back(std::move(name));
            }
        }
        return names;
    };
    const std::size_t place = text.find(missing, first);
    throw ScriptError(
        PlaceIn(text, place != std::string_view::npos ? place : first, start),
        std::string(sqlite3_errmsg(database_)) + session_.suggestions.For(missing, known));
}

Form SqlFormOf(Form form) {
    if (form == Form::Aligned) return Form::Box;
    return form == Form::Tabs ? Form::Csv : form;
}

}  // namespace host
