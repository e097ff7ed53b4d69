#include "store/database.h"

#include <sqlite3.h>

#include <cctype>
#include <utility>

namespace tarno {

namespace {

std::string WithFile(const std::string& description, const std::string& path) {
    if (path.empty()) return description;
    return description + " (file \"" + path + "\")";
}

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    }
    return true;
}

}  // namespace

StoreError::StoreError(std::string description, std::string path, int code, int number)
    : Error(WithFile(description, path), number),
      description_(std::move(description)),
      path_(std::move(path)),
      code_(code) {}

// ---------------------------------------------------------------- Statement

Statement::Statement(sqlite3_stmt* stmt, sqlite3* conn, std::string path)
    : stmt_(stmt), conn_(conn), path_(std::move(path)) {}

Statement::Statement(Statement&& other) noexcept
    : stmt_(std::exchange(other.stmt_, nullptr)),
      conn_(std::exchange(other.conn_, nullptr)),
      path_(std::move(other.path_)) {}

Statement& Statement::operator=(Statement&& other) noexcept {
    if (this != &other) {
        if (stmt_) sqlite3_finalize(stmt_);
        stmt_ = std::exchange(other.stmt_, nullptr);
        conn_ = std::exchange(other.conn_, nullptr);
        path_ = std::move(other.path_);
    }
    return *this;
}

Statement::~Statement() {
    if (stmt_) sqlite3_finalize(stmt_);
}

void Statement::Fail() const {
    throw StoreError(sqlite3_errmsg(conn_), path_, sqlite3_extended_errcode(conn_));
}

void Statement::CheckBind(int rc, int index) const {
    if (rc == SQLITE_OK) return;
    if (rc == SQLITE_RANGE) {
        throw StoreError("bind index " + std::to_string(index) + " out of range in: " + Sql(),
                         path_, rc);
    }
    Fail();
}

Statement& Statement::Bind(int index, std::int64_t v) {
    CheckBind(sqlite3_bind_int64(stmt_, index, v), index);
    return *this;
}
Statement& Statement::Bind(int index, double v) {
    CheckBind(sqlite3_bind_double(stmt_, index, v), index);
    return *this;
}
Statement& Statement::Bind(int index, bool v) {
    CheckBind(sqlite3_bind_int(stmt_, index, v ? 1 : 0), index);
    return *this;
}
Statement& Statement::Bind(int index, std::string_view v) {
    CheckBind(sqlite3_bind_text(stmt_, index, v.data(), static_cast<int>(v.size()),
                                SQLITE_TRANSIENT),
              index);
    return *this;
}
Statement& Statement::Bind(int index, std::nullptr_t) {
    CheckBind(sqlite3_bind_null(stmt_, index), index);
    return *this;
}
Statement& Statement::Bind(int index, const Value& v) {
    return std::visit(
        [&](const auto& x) -> Statement& {
            using T = std::decay_t<decltype(x)>;
            if constexpr (std::is_same_v<T, std::monostate>) return Bind(index, nullptr);
            else if constexpr (std::is_same_v<T, std::string>) return Bind(index, std::string_view(x));
            else return Bind(index, x);
        },
        v);
}

int Statement::ParameterIndex(std::string_view name) const {
    int i = sqlite3_bind_parameter_index(stmt_, std::string(name).c_str());
    if (i == 0) {
        throw StoreError("no parameter named " + std::string(name) + " in: " + Sql(),
                         path_);
    }
    return i;
}

bool Statement::Step() {
    int rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    // Make the statement reusable after a failed step before reporting.
    std::string text = sqlite3_errmsg(conn_);
    int code = sqlite3_extended_errcode(conn_);
    sqlite3_reset(stmt_);
    throw StoreError(text, path_, code);
}

void Statement::Run() {
    while (Step()) {
    }
}

void Statement::Reset() { sqlite3_reset(stmt_); }
void Statement::ClearBindings() { sqlite3_clear_bindings(stmt_); }

int Statement::ColumnCount() const { return sqlite3_column_count(stmt_); }

std::string Statement::ColumnName(int column) const {
    const char* n = sqlite3_column_name(stmt_, column);
    return n ? n : "";
}

int Statement::FindColumn(std::string_view name) const {
    int n = ColumnCount();
    for (int i = 0; i < n; ++i) {
        const char* c = sqlite3_column_name(stmt_, i);
        if (c && EqualsNoCase(c, name)) return i;
    }
    // "Table.Field" asked for a column that the select names by its field.
    auto dot = name.rfind('.');
    if (dot != std::string_view::npos) return FindColumn(name.substr(dot + 1));
    return -1;
}

int Statement::ColumnIndex(std::string_view name) const {
    int i = FindColumn(name);
    if (i < 0) {
        throw StoreError("Item not found in this collection: " + std::string(name) +
                             " (query: " + Sql() + ")",
                         path_);
    }
    return i;
}

ValueKind Statement::Kind(int column) const {
    switch (sqlite3_column_type(stmt_, column)) {
        case SQLITE_INTEGER: return ValueKind::Integer;
        case SQLITE_FLOAT: return ValueKind::Double;
        case SQLITE_TEXT: return ValueKind::Text;
        case SQLITE_BLOB: return ValueKind::Blob;
        default: return ValueKind::Null;
    }
}

bool Statement::IsNull(int column) const { return sqlite3_column_type(stmt_, column) == SQLITE_NULL; }
double Statement::GetDouble(int column) const { return sqlite3_column_double(stmt_, column); }
std::int64_t Statement::GetInt64(int column) const { return sqlite3_column_int64(stmt_, column); }

std::string Statement::GetText(int column) const {
    const unsigned char* t = sqlite3_column_text(stmt_, column);
    if (!t) return {};
    return std::string(reinterpret_cast<const char*>(t),
                       static_cast<std::size_t>(sqlite3_column_bytes(stmt_, column)));
}

bool Statement::GetBool(int column) const {
    switch (sqlite3_column_type(stmt_, column)) {
        case SQLITE_INTEGER: return sqlite3_column_int64(stmt_, column) != 0;
        case SQLITE_FLOAT: return sqlite3_column_double(stmt_, column) != 0.0;
        case SQLITE_TEXT: {
            std::string t = GetText(column);
            return EqualsNoCase(t, "true") || EqualsNoCase(t, "yes") ||
                   (!t.empty() && t != "0" && std::strtod(t.c_str(), nullptr) != 0.0);
        }
        default: return false;
    }
}

Value Statement::GetValue(int column) const {
    switch (Kind(column)) {
        case ValueKind::Integer: return GetInt64(column);
        case ValueKind::Double: return GetDouble(column);
        case ValueKind::Text:
        case ValueKind::Blob: return GetText(column);
        default: return std::monostate{};
    }
}

std::string Statement::Sql() const {
    const char* s = stmt_ ? sqlite3_sql(stmt_) : nullptr;
    return s ? s : "";
}

// ----------------------------------------------------------------- Database

Database Database::OpenWithFlags(const std::filesystem::path& path, int flags) {
    Database d;
    d.path_ = path.string();
    sqlite3* h = nullptr;
    int rc = sqlite3_open_v2(d.path_.c_str(), &h, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    if (rc != SQLITE_OK) {
        std::string text = h ? sqlite3_errmsg(h) : sqlite3_errstr(rc);
        int code = h ? sqlite3_extended_errcode(h) : rc;
        sqlite3_close(h);
        throw StoreError(text, d.path_, code);
    }
    d.db_ = h;
    sqlite3_extended_result_codes(h, 1);
    // A project is one user's file; wait briefly rather than fail at once
    // when a second program touches it.
    sqlite3_busy_timeout(h, 2000);
    return d;
}

Database Database::Open(const std::filesystem::path& path) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        throw StoreError("The file does not exist", path.string(), SQLITE_CANTOPEN,
                         error_number::kFileNotFound);
    }
    Database d = OpenWithFlags(path, SQLITE_OPEN_READWRITE);
    // sqlite3_open_v2 is lazy: make sure it is a database we can read now.
    d.ExecuteRaw("select count(*) from sqlite_master");
    return d;
}

Database Database::OpenReadOnly(const std::filesystem::path& path, int busyTimeoutMs) {
    std::error_code ec;
    if (!std::filesystem::exists(path, ec)) {
        throw StoreError("The file does not exist", path.string(), SQLITE_CANTOPEN,
                         error_number::kFileNotFound);
    }
    Database d = OpenWithFlags(path, SQLITE_OPEN_READONLY);
    d.SetBusyTimeout(busyTimeoutMs);
    d.ExecuteRaw("select count(*) from sqlite_master");
    return d;
}

Database Database::Create(const std::filesystem::path& path) {
    std::error_code ec;
    if (std::filesystem::exists(path, ec)) {
        throw StoreError("The database already exists", path.string(), SQLITE_CANTOPEN);
    }
    Database d = OpenWithFlags(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    // Writes the header so that the file is a database from now on.
    // Writing the application id puts a database header into the file at
    // once, so that the new file is recognisable even before any table.
    d.ExecuteRaw("pragma application_id = 1414680143");  // 0x54524E4F, TRNO
    return d;
}

Database::Database(Database&& other) noexcept
    : db_(std::exchange(other.db_, nullptr)), path_(std::move(other.path_)) {}

Database& Database::operator=(Database&& other) noexcept {
    if (this != &other) {
        Close();
        db_ = std::exchange(other.db_, nullptr);
        path_ = std::move(other.path_);
    }
    return *this;
}

Database::~Database() { Close(); }

void Database::Close() {
    if (db_) {
        // close_v2 defers the close until open statements are finalised,
        // so a forgotten statement cannot make Close fail.
        sqlite3_close_v2(db_);
        db_ = nullptr;
    }
}

void Database::Fail(int rc) const {
    if (!db_) throw StoreError("The database is not open", path_, rc);
    throw StoreError(sqlite3_errmsg(db_), path_, sqlite3_extended_errcode(db_));
}

void Database::ExecuteRaw(std::string_view sql) {
    if (!db_) throw StoreError("The database is not open", path_);
    std::string text(sql);
    char* err = nullptr;
    int rc = sqlite3_exec(db_, text.c_str(), nullptr, nullptr, &err);
    if (rc != SQLITE_OK) {
        std::string msg = err ? err : sqlite3_errstr(rc);
        sqlite3_free(err);
        throw StoreError(msg, path_, sqlite3_extended_errcode(db_));
    }
}

Statement Database::PrepareRaw(std::string_view sql) {
    if (!db_) throw StoreError("The database is not open", path_);
    sqlite3_stmt* st = nullptr;
    const char* tail = nullptr;
    int rc = sqlite3_prepare_v2(db_, sql.data(), static_cast<int>(sql.size()), &st, &tail);
    if (rc != SQLITE_OK) {
        throw StoreError(std::string(sqlite3_errmsg(db_)) + " in: " + std::string(sql), path_,
                         sqlite3_extended_errcode(db_));
    }
    if (!st) throw StoreError("Empty SQL statement", path_);
    Statement s(st, db_, path_);
    // Refuse a second statement hidden behind the first.
    for (const char* p = tail; p && p < sql.data() + sql.size(); ++p) {
        if (!std::isspace(static_cast<unsigned char>(*p)) && *p != ';') {
            throw StoreError("Characters found after end of SQL statement: " + std::string(sql), path_);
        }
    }
    return s;
}

void Database::Execute(std::string_view jetSql) {
    Statement s = Prepare(jetSql);
    s.Run();
}

Statement Database::Prepare(std::string_view jetSql) {
    std::string sql;
    try {
        sql = TranslateJetSql(jetSql);
    } catch (const StoreError& e) {
        throw StoreError(e.description(), path_, e.code());
    }
    return PrepareRaw(sql);
}

std::int64_t Database::LastInsertId() const { return db_ ? sqlite3_last_insert_rowid(db_) : 0; }
int Database::Changes() const { return db_ ? sqlite3_changes(db_) : 0; }

void Database::SetBusyTimeout(int milliseconds) {
    if (db_) sqlite3_busy_timeout(db_, milliseconds);
}

bool Database::TableExists(std::string_view table) {
    Statement s = PrepareRaw("select 1 from sqlite_master where type='table' and name = ?1 collate nocase");
    s.Bind(1, table);
    return s.Step();
}

bool Database::ColumnExists(std::string_view table, std::string_view column) {
    Statement s = PrepareRaw("select 1 from pragma_table_info(?1) where name = ?2 collate nocase");
    s.Bind(1, table).Bind(2, column);
    return s.Step();
}

// -------------------------------------------------------------- Transaction

// A savepoint rather than BEGIN, so that an operation that keeps its own
// transaction can run inside a caller's: the inner one then commits into the outer.
Transaction::Transaction(Database& db) : db_(&db) { db_->ExecuteRaw("SAVEPOINT tarno_tx"); }

Transaction::~Transaction() {
    if (open_) {
        try {
            db_->ExecuteRaw("ROLLBACK TO tarno_tx; RELEASE tarno_tx");
        } catch (...) {
            // The engine may already have rolled back after an error.
        }
    }
}

void Transaction::Commit() {
    if (!open_) throw StoreError("No transaction is active", db_->Path());
    db_->ExecuteRaw("RELEASE tarno_tx");
    open_ = false;
}

void Transaction::Rollback() {
    if (!open_) return;
    open_ = false;
    db_->ExecuteRaw("ROLLBACK TO tarno_tx; RELEASE tarno_tx");
}

}  // namespace tarno
