#include "store/undo_history.h"

// The session extension's declarations are behind these switches in sqlite3.h; the
// system's library is built with both (checked by the store's tests).
#ifndef SQLITE_ENABLE_SESSION
#define SQLITE_ENABLE_SESSION 1
#endif
#ifndef SQLITE_ENABLE_PREUPDATE_HOOK
#define SQLITE_ENABLE_PREUPDATE_HOOK 1
#endif
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <mutex>
#include <stdexcept>
#include <utility>

namespace tarno {

namespace {

bool EqualsNoCase(std::string_view a, std::string_view b) {
    if (a.size() != b.size()) return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (std::tolower(static_cast<unsigned char>(a[i])) !=
            std::tolower(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}

std::string QuoteName(std::string_view v) {
    std::string r = "\"";
    for (char c : v) {
        if (c == '"') r += "\"\"";
        else r += c;
    }
    return r + "\"";
}

// The names of the temporary log of a table and its triggers.
std::string LogTable(std::string_view table) { return "tarno_undo_log_" + std::string(table); }
std::string TriggerName(std::string_view what, std::string_view table) {
    return "tarno_undo_" + std::string(what) + "_" + std::string(table);
}

// --- the files' histories ---------------------------------------------------

std::string FileKey(const std::string& path) {
    std::error_code ec;
    std::filesystem::path p = std::filesystem::weakly_canonical(path, ec);
    if (ec) p = std::filesystem::absolute(path, ec);
    return ec ? path : p.string();
}

std::mutex& RegistryMutex() {
    static std::mutex m;
    return m;
}
std::map<std::string, UndoHistory*>& Registry() {
    static std::map<std::string, UndoHistory*> r;
    return r;
}

// --- reading tables ----------------------------------------------------------

struct TableShape {
    std::vector<std::string> columns;
    bool hasKey = false;  // a declared primary key (the session extension records it)
};

// The columns of a table of the file; no columns when there is no such table.
TableShape ShapeOf(Database& db, std::string_view table) {
    TableShape s;
    Statement st = db.PrepareRaw("PRAGMA main.table_info(" + QuoteName(table) + ")");
    while (st.Step()) {
        s.columns.push_back(st.GetText("name"));
        if (st.GetInt64("pk") > 0) s.hasKey = true;
    }
    return s;
}

std::string ColumnList(const std::vector<std::string>& columns) {
    std::string s;
    for (const std::string& c : columns) {
        if (!s.empty()) s += ", ";
        s += QuoteName(c);
    }
    return s;
}

// The row `rowid` of a table as it is now; none when absent.
std::optional<std::vector<Value>> ReadRow(Database& db, const std::string& table,
                                          const std::vector<std::string>& columns,
                                          std::int64_t rowid) {
    Statement st = db.PrepareRaw("SELECT " + ColumnList(columns) + " FROM main." +
                                 QuoteName(table) + " WHERE rowid = ?1");
    st.Bind(1, rowid);
    if (!st.Step()) return std::nullopt;
    std::vector<Value> v;
    v.reserve(columns.size());
    for (int i = 0; i < static_cast<int>(columns.size()); ++i) v.push_back(st.GetValue(i));
    return v;
}

// --- applying a changeset ----------------------------------------------------

struct ApplyContext {
    std::string conflict;  // what stopped the apply; empty while none
};

int AbortOnConflict(void* ctx, int kind, sqlite3_changeset_iter* it) {
    auto* c = static_cast<ApplyContext*>(ctx);
    const char* table = nullptr;
    int columns = 0, op = 0, indirect = 0;
    sqlite3changeset_op(it, &table, &columns, &op, &indirect);
    const std::string t = table ? table : "?";
    switch (kind) {
        case SQLITE_CHANGESET_NOTFOUND: c->conflict = "a row of table " + t + " is gone"; break;
        case SQLITE_CHANGESET_CONFLICT:
            c->conflict = "a row of table " + t + " is already there";
            break;
        case SQLITE_CHANGESET_CONSTRAINT:
            c->conflict = "a row of table " + t + " breaks a rule of the table";
            break;
        default: c->conflict = "a row of table " + t + " has other values"; break;
    }
    return SQLITE_CHANGESET_ABORT;
}

std::string CombineChangesets(const std::vector<std::string>& parts, const std::string& path) {
    if (parts.empty()) return {};
    if (parts.size() == 1) return parts.front();
    sqlite3_changegroup* g = nullptr;
    if (sqlite3changegroup_new(&g) != SQLITE_OK) throw StoreError("out of memory", path);
    for (const std::string& p : parts) {
        int rc = sqlite3changegroup_add(g, static_cast<int>(p.size()),
                                        const_cast<char*>(p.data()));
        if (rc != SQLITE_OK) {
            sqlite3changegroup_delete(g);
            throw StoreError("the changes of an operation cannot be combined", path, rc);
        }
    }
    int n = 0;
    void* out = nullptr;
    int rc = sqlite3changegroup_output(g, &n, &out);
    sqlite3changegroup_delete(g);
    if (rc != SQLITE_OK) throw StoreError("the changes of an operation cannot be combined", path, rc);
    std::string s(static_cast<const char*>(out), static_cast<std::size_t>(n));
    sqlite3_free(out);
    return s;
}

// The tables of a changeset with their numbers of columns, or the reason it cannot
// be read.
std::map<std::string, int> ChangesetTables(const std::string& cs, const std::string& path) {
    std::map<std::string, int> tables;
    sqlite3_changeset_iter* it = nullptr;
    if (sqlite3changeset_start(&it, static_cast<int>(cs.size()), const_cast<char*>(cs.data())) !=
        SQLITE_OK)
        throw StoreError("an entry of the edit history cannot be read", path);
    while (sqlite3changeset_next(it) == SQLITE_ROW) {
        const char* table = nullptr;
        int columns = 0, op = 0, indirect = 0;
        sqlite3changeset_op(it, &table, &columns, &op, &indirect);
        tables.emplace(table ? table : "", columns);
    }
    sqlite3changeset_finalize(it);
    return tables;
}

}  // namespace

// --- one recorded connection ---------------------------------------------------

struct UndoHistory::Recorder {
    Database* db = nullptr;
    sqlite3_session* session = nullptr;
    int level = 0;  // the depth of the Begin that started recording this connection
    struct Logged {
        std::string table;
        std::vector<std::string> columns;
    };
    std::vector<Logged> logged;  // the tables without a key, logged by triggers

    void DeleteSession() {
        if (session) sqlite3session_delete(session);
        session = nullptr;
    }
};

// --- UndoHistory -----------------------------------------------------------------

UndoHistory::UndoHistory() : filter_([](std::string_view t) { return !IsResultTable(t); }) {}

UndoHistory::~UndoHistory() {
    for (auto& r : recorders_) r->DeleteSession();
    Detach();
}

bool UndoHistory::IsResultTable(std::string_view table) {
    static constexpr std::string_view kResults[] = {"WLResults", "LSResults", "INResults",
                                                    "NFResults", "TPResults", "FIResults"};
    return std::any_of(std::begin(kResults), std::end(kResults),
                       [&](std::string_view r) { return EqualsNoCase(r, table); });
}

void UndoHistory::Attach(const std::string& path) {
    Detach();
    std::lock_guard lock(RegistryMutex());
    Registry()[FileKey(path)] = this;
    path_ = path;
}

void UndoHistory::Detach() {
    Clear();
    if (path_.empty()) return;
    std::lock_guard lock(RegistryMutex());
    auto it = Registry().find(FileKey(path_));
    if (it != Registry().end() && it->second == this) Registry().erase(it);
    path_.clear();
}

UndoHistory* UndoHistory::Of(const Database& db) {
    if (!db.IsOpen() || db.Path().empty()) return nullptr;
    const std::string key = FileKey(db.Path());
    std::lock_guard lock(RegistryMutex());
    auto it = Registry().find(key);
    return it == Registry().end() ? nullptr : it->second;
}

void UndoHistory::SetTableFilter(TableFilter filter) {
    filter_ = filter ? std::move(filter) : TableFilter([](std::string_view) { return true; });
}

std::string UndoHistory::UndoName() const { return undo_.empty() ? std::string() : undo_.back().name; }
std::string UndoHistory::RedoName() const { return redo_.empty() ? std::string() : redo_.back().name; }

void UndoHistory::Clear() {
    undo_.clear();
    redo_.clear();
}

// --- recording -------------------------------------------------------------------

void UndoHistory::Begin(Database& db, std::string name) {
    if (!db.IsOpen()) throw StoreError("an operation cannot be recorded on a closed file", db.Path());
    for (const auto& r : recorders_) {
        if (r->db->Handle() == db.Handle()) {  // joins the operation on its connection
            ++depth_;
            if (depth_ == 1) pendingName_ = std::move(name);
            return;
        }
    }

    auto r = std::make_unique<Recorder>();
    r->db = &db;
    r->level = depth_ + 1;

    // The tables without a key: a log table and three triggers each, made once per
    // connection, and the log emptied of anything an earlier use left.
    std::vector<std::string> tables;
    {
        Statement st = db.PrepareRaw(
            "SELECT name FROM main.sqlite_master WHERE type = 'table' AND name NOT LIKE "
            "'sqlite\\_%' ESCAPE '\\' ORDER BY name");
        while (st.Step()) tables.push_back(st.GetText(0));
    }
    for (const std::string& t : tables) {
        if (!filter_(t)) continue;
        TableShape shape = ShapeOf(db, t);
        if (shape.hasKey || shape.columns.empty()) continue;
        const std::string log = QuoteName(LogTable(t));
        std::string logCols, oldVals;
        for (std::size_t i = 0; i < shape.columns.size(); ++i) {
            logCols += ", c" + std::to_string(i);
            oldVals += ", OLD." + QuoteName(shape.columns[i]);
        }
        const std::string table = QuoteName(t);
        db.ExecuteRaw("CREATE TEMP TABLE IF NOT EXISTS " + log +
                      " (undo_seq INTEGER PRIMARY KEY, undo_rid INTEGER, undo_present INTEGER" +
                      logCols + ");");
        db.ExecuteRaw("CREATE TEMP TRIGGER IF NOT EXISTS " + QuoteName(TriggerName("ins", t)) +
                      " AFTER INSERT ON " + table + " BEGIN INSERT INTO " + log +
                      " (undo_rid, undo_present) VALUES (NEW.rowid, 0); END;");
        db.ExecuteRaw("CREATE TEMP TRIGGER IF NOT EXISTS " + QuoteName(TriggerName("upd", t)) +
                      " AFTER UPDATE ON " + table + " BEGIN INSERT INTO " + log +
                      " (undo_rid, undo_present" + logCols + ") VALUES (OLD.rowid, 1" + oldVals +
                      "); INSERT INTO " + log +
                      " (undo_rid, undo_present) SELECT NEW.rowid, 0 WHERE NEW.rowid IS NOT "
                      "OLD.rowid; END;");
        db.ExecuteRaw("CREATE TEMP TRIGGER IF NOT EXISTS " + QuoteName(TriggerName("del", t)) +
                      " AFTER DELETE ON " + table + " BEGIN INSERT INTO " + log +
                      " (undo_rid, undo_present" + logCols + ") VALUES (OLD.rowid, 1" + oldVals +
                      "); END;");
        db.ExecuteRaw("DELETE FROM temp." + log);
        r->logged.push_back({t, std::move(shape.columns)});
    }

    // The tables with a key: the session extension.
    int rc = sqlite3session_create(db.Handle(), "main", &r->session);
    if (rc != SQLITE_OK) db.Fail(rc);
    sqlite3session_table_filter(
        r->session,
        [](void* ctx, const char* table) -> int {
            return (*static_cast<TableFilter*>(ctx))(table ? table : "") ? 1 : 0;
        },
        &filter_);
    rc = sqlite3session_attach(r->session, nullptr);
    if (rc != SQLITE_OK) {
        r->DeleteSession();
        db.Fail(rc);
    }

    recorders_.push_back(std::move(r));
    ++depth_;
    if (depth_ == 1) pendingName_ = std::move(name);
}

void UndoHistory::Harvest(Recorder& r) {
    Database& db = *r.db;
    const std::string path = db.Path();

    // The session's changeset: the net change of the keyed tables.
    int n = 0;
    void* p = nullptr;
    int rc = sqlite3session_changeset(r.session, &n, &p);
    r.DeleteSession();
    if (rc != SQLITE_OK) {
        sqlite3_free(p);
        throw StoreError("the changes of the operation cannot be read", path, rc);
    }
    if (n > 0) pendingChangesets_.emplace_back(static_cast<const char*>(p), static_cast<std::size_t>(n));
    sqlite3_free(p);

    // The logged tables: the first state logged of each row against its state now.
    for (const Recorder::Logged& l : r.logged) {
        std::map<std::int64_t, std::optional<std::vector<Value>>> first;
        std::vector<std::int64_t> order;
        std::string cols;
        for (std::size_t i = 0; i < l.columns.size(); ++i) cols += ", c" + std::to_string(i);
        const std::string log = "temp." + QuoteName(LogTable(l.table));
        {
            Statement st = db.PrepareRaw("SELECT undo_rid, undo_present" + cols + " FROM " + log +
                                         " ORDER BY undo_seq");
            while (st.Step()) {
                const std::int64_t rid = st.GetInt64(0);
                if (first.count(rid)) continue;
                order.push_back(rid);
                if (st.GetInt64(1) == 0) {
                    first.emplace(rid, std::nullopt);
                } else {
                    std::vector<Value> v;
                    for (int i = 0; i < static_cast<int>(l.columns.size()); ++i)
                        v.push_back(st.GetValue(2 + i));
                    first.emplace(rid, std::move(v));
                }
            }
        }
        db.ExecuteRaw("DELETE FROM " + log);
        for (std::int64_t rid : order) {
            std::optional<std::vector<Value>> now = ReadRow(db, l.table, l.columns, rid);
            // A row changed through two connections of one operation: the state
            // before is the one found first (the first connection whose level
            // closed), the state after the latest.
            auto same = std::find_if(pendingRows_.begin(), pendingRows_.end(), [&](const RowidChange& c) {
                return c.rowid == rid && EqualsNoCase(c.table, l.table);
            });
            if (same != pendingRows_.end()) {
                same->after = std::move(now);
                if (same->after == same->before) pendingRows_.erase(same);
                continue;
            }
            if (now == first[rid]) continue;
            pendingRows_.push_back({l.table, l.columns, rid, std::move(first[rid]), std::move(now)});
        }
    }
}

void UndoHistory::EndLevel(bool keep) {
    if (depth_ == 0) throw std::logic_error("UndoHistory: Commit or Abandon without Begin");
    const bool outermost = depth_ == 1;
    const bool discard = outermost && !keep;

    // The connections recorded from this level on are finished with here.
    std::exception_ptr failure;
    for (auto it = recorders_.begin(); it != recorders_.end();) {
        Recorder& r = **it;
        if (r.level < depth_) {
            ++it;
            continue;
        }
        if (!discard && !failure) {
            try {
                Harvest(r);
            } catch (...) {
                failure = std::current_exception();
            }
        } else {
            r.DeleteSession();
            // The logs are emptied by the next Begin on this connection.
        }
        r.DeleteSession();
        it = recorders_.erase(it);
    }
    --depth_;

    if (failure) {
        // The operation cannot be recorded: its changes are not in the history. An
        // undo of an earlier entry that meets them reports a conflict.
        if (outermost) {
            pendingChangesets_.clear();
            pendingRows_.clear();
        }
        std::rethrow_exception(failure);
    }
    if (!outermost) return;

    UndoEntry entry;
    entry.name = std::move(pendingName_);
    pendingName_.clear();
    std::vector<std::string> parts = std::move(pendingChangesets_);
    pendingChangesets_.clear();
    entry.rows = std::move(pendingRows_);
    pendingRows_.clear();
    if (discard) return;
    entry.changeset = CombineChangesets(parts, path_);
    if (entry.Empty()) return;
    undo_.push_back(std::move(entry));
    redo_.clear();
}

void UndoHistory::Commit() { EndLevel(true); }
void UndoHistory::Abandon() { EndLevel(false); }

// --- undo and redo -----------------------------------------------------------------

bool UndoHistory::Undo() {
    if (undo_.empty() || depth_ > 0 || path_.empty()) return false;
    Database db = Database::Open(path_);
    return Undo(db);
}

bool UndoHistory::Redo() {
    if (redo_.empty() || depth_ > 0 || path_.empty()) return false;
    Database db = Database::Open(path_);
    return Redo(db);
}

bool UndoHistory::Undo(Database& db) { return Apply(db, true); }
bool UndoHistory::Redo(Database& db) { return Apply(db, false); }

namespace {

// Moves one row from the state `from` to `to`, if the file still has it as `from`
// (for an update: in the fields that differ). Gives the conflict, empty when none.
std::string ApplyRow(Database& db, const RowidChange& c, const std::optional<std::vector<Value>>& from,
                     const std::optional<std::vector<Value>>& to) {
    const TableShape shape = ShapeOf(db, c.table);
    if (shape.columns.empty()) return "table " + c.table + " is gone";
    if (shape.columns.size() != c.columns.size() ||
        !std::equal(shape.columns.begin(), shape.columns.end(), c.columns.begin(), EqualsNoCase))
        return "the fields of table " + c.table + " have changed";
    const std::optional<std::vector<Value>> now = ReadRow(db, c.table, c.columns, c.rowid);
    const std::string table = "main." + QuoteName(c.table);

    if (from && to) {
        if (!now) return "a row of table " + c.table + " is gone";
        std::string sets;
        std::vector<std::size_t> changed;
        for (std::size_t i = 0; i < c.columns.size(); ++i) {
            if ((*from)[i] == (*to)[i]) continue;
            if ((*now)[i] != (*from)[i]) return "a row of table " + c.table + " has other values";
            changed.push_back(i);
            sets += (sets.empty() ? "" : ", ") + QuoteName(c.columns[i]) + " = ?" +
                    std::to_string(changed.size());
        }
        if (changed.empty()) return {};
        Statement st = db.PrepareRaw("UPDATE " + table + " SET " + sets + " WHERE rowid = ?" +
                                     std::to_string(changed.size() + 1));
        for (std::size_t k = 0; k < changed.size(); ++k)
            st.Bind(static_cast<int>(k + 1), (*to)[changed[k]]);
        st.Bind(static_cast<int>(changed.size() + 1), c.rowid);
        st.Run();
    } else if (from) {
        if (!now) return "a row of table " + c.table + " is gone";
        if (*now != *from) return "a row of table " + c.table + " has other values";
        Statement st = db.PrepareRaw("DELETE FROM " + table + " WHERE rowid = ?1");
        st.Bind(1, c.rowid);
        st.Run();
    } else if (to) {
        if (now) return "a row of table " + c.table + " is already there";
        std::string marks = "?1";
        for (std::size_t i = 0; i < c.columns.size(); ++i) marks += ", ?" + std::to_string(i + 2);
        Statement st = db.PrepareRaw("INSERT INTO " + table + " (rowid, " + ColumnList(c.columns) +
                                     ") VALUES (" + marks + ")");
        st.Bind(1, c.rowid);
        for (std::size_t i = 0; i < c.columns.size(); ++i) st.Bind(static_cast<int>(i + 2), (*to)[i]);
        st.Run();
    }
    return {};
}

}  // namespace

bool UndoHistory::Apply(Database& db, bool undo) {
    std::vector<UndoEntry>& from = undo ? undo_ : redo_;
    std::vector<UndoEntry>& to = undo ? redo_ : undo_;
    if (from.empty() || depth_ > 0) return false;
    const UndoEntry& e = from.back();
    const std::string path = db.Path();

    std::string conflict;
    Transaction tx(db);
    if (undo) {
        for (auto it = e.rows.rbegin(); it != e.rows.rend() && conflict.empty(); ++it)
            conflict = ApplyRow(db, *it, it->after, it->before);
    } else {
        for (auto it = e.rows.begin(); it != e.rows.end() && conflict.empty(); ++it)
            conflict = ApplyRow(db, *it, it->before, it->after);
    }

    if (conflict.empty() && !e.changeset.empty()) {
        std::string cs = e.changeset;
        if (undo) {
            int n = 0;
            void* p = nullptr;
            int rc = sqlite3changeset_invert(static_cast<int>(cs.size()), cs.data(), &n, &p);
            if (rc != SQLITE_OK) throw StoreError("an entry of the edit history cannot be read", path, rc);
            cs.assign(static_cast<const char*>(p), static_cast<std::size_t>(n));
            sqlite3_free(p);
        }
        // A table whose fields changed would be passed over by the apply: it counts
        // as a conflict.
        for (const auto& [table, columns] : ChangesetTables(cs, path)) {
            const TableShape shape = ShapeOf(db, table);
            if (shape.columns.empty()) conflict = "table " + table + " is gone";
            else if (static_cast<int>(shape.columns.size()) != columns)
                conflict = "the fields of table " + table + " have changed";
            if (!conflict.empty()) break;
        }
        if (conflict.empty()) {
            ApplyContext ctx;
            int rc = sqlite3changeset_apply(db.Handle(), static_cast<int>(cs.size()), cs.data(),
                                            nullptr, AbortOnConflict, &ctx);
            if (!ctx.conflict.empty()) conflict = ctx.conflict;
            else if (rc != SQLITE_OK) db.Fail(rc);  // the savepoint rolls back
        }
    }

    if (!conflict.empty()) {
        tx.Rollback();
        const std::string name = e.name;
        Clear();
        throw UndoConflictError(std::string(undo ? "Cannot undo \"" : "Cannot redo \"") + name +
                                    "\": the project file was changed outside the edit history (" +
                                    conflict +
                                    "). The file is left as it was and the undo history has been "
                                    "cleared.",
                                path);
    }
    tx.Commit();
    to.push_back(std::move(from.back()));
    from.pop_back();
    return true;
}

// --- UndoScope -------------------------------------------------------------------

UndoScope::UndoScope(UndoHistory& history, Database& db, std::string name) : history_(&history) {
    history_->Begin(db, std::move(name));
    open_ = true;
}

UndoScope::UndoScope(Database& db, std::string name) : history_(UndoHistory::Of(db)) {
    if (history_ == nullptr) return;
    history_->Begin(db, std::move(name));
    open_ = true;
}

UndoScope::~UndoScope() {
    if (!open_) return;
    try {
        history_->Abandon();
    } catch (...) {
        // A destructor does not throw; the operation is simply not recorded.
    }
}

void UndoScope::Commit() {
    if (!open_) return;
    open_ = false;
    history_->Commit();
}

void UndoScope::Abandon() {
    if (!open_) return;
    open_ = false;
    history_->Abandon();
}

}  // namespace tarno
