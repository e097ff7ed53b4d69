#pragma once
// The project store's database layer: a small RAII wrapper over SQLite 3.
//
// Each operation of the program opens the project file for its own time:
//
//     tarno::Database db = tarno::Database::Open(path);
//     tarno::Statement st = db.Prepare("select * from Wells where Label='W1'");
//     while (st.Step()) { double h = st.GetDouble("Head"); ... }
//
// and lets the Database go out of scope (or calls Close). The session keeps
// only the path of the open project, never a connection.
//
// SQL dialect. Prepare() and Execute() take the program's own query texts,
// which are written in the classic Jet dialect (`DELETE * FROM x`,
// `like '*.bbm'`, `chkScenario = True`, "double quoted" strings, computed
// columns reused later in the same select list), and pass them through
// TranslateJetSql() before SQLite sees them. PrepareRaw() and ExecuteRaw()
// hand SQLite-native SQL through untouched (DDL, pragmas, the store's own
// statements). See docs/store.md for the full list of translations.
//
// Values. Booleans are stored as 1 (True) and 0 (False); GetBool() reads any
// non-zero number as True, so a -1 written by older code still reads True.
// Dates are ISO-8601 text "YYYY-MM-DD HH:MM:SS". Text columns compare without
// regard to case (COLLATE NOCASE).
//
// Errors. Every failure throws tarno::StoreError (a tarno::Error, so the
// general error trap reports it). Its what() is the
// database engine's own description followed by the file name, e.g.
//   NOT NULL constraint failed: Lakes.Label (file "/home/a/x.trn")
// description() gives the engine's text alone, path() the file.

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>

#include "core/error.h"

struct sqlite3;
struct sqlite3_stmt;

namespace tarno {

class StoreError : public Error {
public:
    // description: the engine's text; path: the project file ("" if none);
    // code: SQLite's extended result code, or 0 when the error is the store's own.
    // number() is error_number::kFileNotFound for a missing file, else 0.
    StoreError(std::string description, std::string path, int code = 0,
               int number = error_number::kNone);

    const std::string& description() const noexcept { return description_; }
    const std::string& path() const noexcept { return path_; }
    int code() const noexcept { return code_; }

private:
    std::string description_;
    std::string path_;
    int code_;
};

// A value of one field, for generic row access (table viewer, exchange).
// monostate is SQL NULL.
using Value = std::variant<std::monostate, std::int64_t, double, std::string>;

enum class ValueKind { Null, Integer, Double, Text, Blob };

// Translates one SQL text from the Jet forms used by the program to SQLite.
// Pure text transformation; throws StoreError (with an empty path) for forms
// it cannot translate faithfully (a LIKE pattern using '#' or '[...]').
std::string TranslateJetSql(std::string_view jetSql);

class Database;

// A prepared statement. Move-only; finalised by its destructor.
// Indexes are 1-based for Bind (as in SQL) and 0-based for columns.
// Column names are matched without regard to case.
class Statement {
public:
    Statement() = default;
    Statement(Statement&& other) noexcept;
    Statement& operator=(Statement&& other) noexcept;
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement();

    // Binding, by 1-based index or by parameter name including its prefix
    // (":x", "@x" or "$x"). Bool binds 1 or 0.
    Statement& Bind(int index, std::int64_t v);
    Statement& Bind(int index, int v) { return Bind(index, static_cast<std::int64_t>(v)); }
    Statement& Bind(int index, double v);
    Statement& Bind(int index, bool v);
    Statement& Bind(int index, std::string_view v);
    Statement& Bind(int index, const char* v) { return Bind(index, std::string_view(v)); }
    Statement& Bind(int index, const std::string& v) { return Bind(index, std::string_view(v)); }
    Statement& Bind(int index, std::nullptr_t);
    Statement& Bind(int index, const Value& v);
    template <typename T>
    Statement& Bind(std::string_view name, T&& v) { return Bind(ParameterIndex(name), std::forward<T>(v)); }
    int ParameterIndex(std::string_view name) const;  // throws if unknown

    // Advances to the next row: true when a row is ready, false when done.
    bool Step();
    // Steps to completion (for statements that return no rows).
    void Run();
    // Makes the statement ready to run again; bindings stay unless cleared.
    void Reset();
    void ClearBindings();

    int ColumnCount() const;
    std::string ColumnName(int column) const;
    // Index of a result column by name, without regard to case; -1 if absent.
    int FindColumn(std::string_view name) const;
    // As FindColumn, but throws StoreError naming the column if absent.
    int ColumnIndex(std::string_view name) const;

    // Column access of the current row. NULL reads as 0, 0.0, "" and false.
    ValueKind Kind(int column) const;
    bool IsNull(int column) const;
    double GetDouble(int column) const;
    std::int64_t GetInt64(int column) const;
    std::string GetText(int column) const;
    bool GetBool(int column) const;  // any non-zero number is True
    Value GetValue(int column) const;

    bool IsNull(std::string_view name) const { return IsNull(ColumnIndex(name)); }
    double GetDouble(std::string_view name) const { return GetDouble(ColumnIndex(name)); }
    std::int64_t GetInt64(std::string_view name) const { return GetInt64(ColumnIndex(name)); }
    std::string GetText(std::string_view name) const { return GetText(ColumnIndex(name)); }
    bool GetBool(std::string_view name) const { return GetBool(ColumnIndex(name)); }
    Value GetValue(std::string_view name) const { return GetValue(ColumnIndex(name)); }
    ValueKind Kind(std::string_view name) const { return Kind(ColumnIndex(name)); }

    // The SQL as SQLite received it (after translation).
    std::string Sql() const;
    bool IsValid() const noexcept { return stmt_ != nullptr; }

private:
    friend class Database;
    Statement(sqlite3_stmt* stmt, sqlite3* conn, std::string path);
    [[noreturn]] void Fail() const;
    void CheckBind(int rc, int index) const;

    sqlite3_stmt* stmt_ = nullptr;
    sqlite3* conn_ = nullptr;  // the owning connection (outlives the statement)
    std::string path_;         // the file, for error texts
};

// One connection to one project file. Move-only; closed by its destructor.
class Database {
public:
    // Opens an existing file for reading and writing. Throws StoreError if
    // the file does not exist or cannot be opened.
    static Database Open(const std::filesystem::path& path);
    // Opens an existing file for reading only (probing, copying). The busy
    // timeout applies from the first read on.
    static Database OpenReadOnly(const std::filesystem::path& path, int busyTimeoutMs = 2000);
    // Creates a new, empty database file. Throws if the file already exists.
    static Database Create(const std::filesystem::path& path);

    Database() = default;
    Database(Database&& other) noexcept;
    Database& operator=(Database&& other) noexcept;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    ~Database();

    // Closes the connection. Statements must be gone first. Safe to repeat.
    void Close();
    bool IsOpen() const noexcept { return db_ != nullptr; }
    const std::string& Path() const noexcept { return path_; }

    // Jet-dialect SQL, translated by TranslateJetSql.
    void Execute(std::string_view jetSql);
    Statement Prepare(std::string_view jetSql);
    // SQLite SQL, untouched. ExecuteRaw may hold several statements.
    void ExecuteRaw(std::string_view sql);
    Statement PrepareRaw(std::string_view sql);

    std::int64_t LastInsertId() const;
    // Rows changed by the last INSERT, UPDATE or DELETE.
    int Changes() const;
    // How long a statement waits for another connection's lock (ms).
    void SetBusyTimeout(int milliseconds);

    bool TableExists(std::string_view table);
    bool ColumnExists(std::string_view table, std::string_view column);

    sqlite3* Handle() const noexcept { return db_; }

    // Throws StoreError with the connection's current error text.
    [[noreturn]] void Fail(int rc) const;

private:
    static Database OpenWithFlags(const std::filesystem::path& path, int flags);
    sqlite3* db_ = nullptr;
    std::string path_;
};

// RAII transaction, nestable (a savepoint): begun on construction, rolled back on
// destruction unless Commit() was called. An inner transaction commits into the
// outer one.
class Transaction {
public:
    explicit Transaction(Database& db);
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    ~Transaction();
    void Commit();
    void Rollback();

private:
    Database* db_;
    bool open_ = true;
};

}  // namespace tarno
