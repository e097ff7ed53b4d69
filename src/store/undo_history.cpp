#include "store/undo_history.h"

// The session extension's declarations are behind these switches in sqlite3.h; the
// system's library is built with both (the store's tests fail without them).
#ifndef SQLITE_ENABLE_SESSION
#define SQLITE_ENABLE_SESSION 1
#endif
#ifndef SQLITE_ENABLE_PREUPDATE_HOOK
#define SQLITE_ENABLE_PREUPDATE_HOOK 1
#endif
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
#include <exception>
#include <filesystem>
#include <map>
#include <mutex>
#include <set>
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
    if (c == '"')
      r += "\"\"";
    else
      r += c;
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

// The connections being recorded now. The log triggers fire only on these
// (tarno_undo_recording() in their WHEN clause), so that a connection that
// outlives its operation does not go on logging its later writes.
std::mutex& RecordingMutex() {
  static std::mutex m;
  return m;
}
std::set<sqlite3*>& Recording() {
  static std::set<sqlite3*> s;
  return s;
}
void SetRecording(sqlite3* db, bool on) {
  std::lock_guard lock(RecordingMutex());
  if (on)
    Recording().insert(db);
  else
    Recording().erase(db);
}
void RecordingFunction(sqlite3_context* ctx, int, sqlite3_value**) {
  sqlite3* db = sqlite3_context_db_handle(ctx);
  std::lock_guard lock(RecordingMutex());
  sqlite3_result_int(ctx, Recording().count(db) ? 1 : 0);
}
constexpr const char* kRecordingFunction = "tarno_undo_recording";

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

// Reads rows of one table by rowid with one prepared statement.
class RowReader {
 public:
  RowReader(Database& db, const std::string& table, const std::vector<std::string>& columns)
      : columns_(columns.size()),
        st_(db.PrepareRaw("SELECT " + ColumnList(columns) + " FROM main." + QuoteName(table) +
                          " WHERE rowid = ?1")) {}
  // The row as it is now; none when absent.
  std::optional<std::vector<Value>> Read(std::int64_t rowid) {
    st_.Reset();
    st_.Bind(1, rowid);
    if (!st_.Step()) return std::nullopt;
    std::vector<Value> v;
    v.reserve(columns_);
    for (int i = 0; i < static_cast<int>(columns_); ++i) v.push_back(st_.GetValue(i));
    st_.Reset();
    return v;
  }

 private:
  std::size_t columns_;
  Statement st_;
};

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
    int rc = sqlite3changegroup_add(g, static_cast<int>(p.size()), const_cast<char*>(p.data()));
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

std::vector<std::string> ChangedTables(const UndoEntry& entry) {
  std::map<std::string, int> names;
  if (!entry.changeset.empty()) names = ChangesetTables(entry.changeset, {});
  for (const RowidChange& r : entry.rows) names.emplace(r.table, 0);
  std::vector<std::string> tables;
  for (const auto& [name, columns] : names) tables.push_back(name);
  return tables;
}

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
  for (auto& r : recorders_) {
    SetRecording(r->db->Handle(), false);
    r->DeleteSession();
  }
  Detach();
}

bool UndoHistory::IsResultTable(std::string_view table) {
  static constexpr std::string_view kResults[] = {"WLResults", "LSResults", "INResults",
                                                  "NFResults", "TPResults", "FIResults",
                                                  "LKResults"};
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

std::string UndoHistory::UndoName() const {
  return undo_.empty() ? std::string() : undo_.back().name;
}
std::string UndoHistory::RedoName() const {
  return redo_.empty() ? std::string() : redo_.back().name;
}

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
  int rc = sqlite3_create_function_v2(db.Handle(), kRecordingFunction, 0, SQLITE_UTF8, nullptr,
                                      RecordingFunction, nullptr, nullptr, nullptr);
  if (rc != SQLITE_OK) db.Fail(rc);
  const std::string when = std::string(" WHEN ") + kRecordingFunction + "()";
  // Every table's fields in one query.
  std::vector<std::pair<std::string, TableShape>> tables;
  {
    Statement st = db.PrepareRaw(
        "SELECT m.name, p.name, p.pk FROM main.sqlite_master AS m, "
        "pragma_table_info(m.name, 'main') AS p WHERE m.type = 'table' AND m.name NOT LIKE "
        "'sqlite\\_%' ESCAPE '\\' ORDER BY m.name, p.cid");
    while (st.Step()) {
      std::string t = st.GetText(0);
      if (tables.empty() || tables.back().first != t)
        tables.emplace_back(std::move(t), TableShape{});
      tables.back().second.columns.push_back(st.GetText(1));
      if (st.GetInt64(2) > 0) tables.back().second.hasKey = true;
    }
  }
  // The logs and triggers in one batch, one transaction of the temporary schema.
  std::string ddl = "SAVEPOINT tarno_undo_setup;";
  for (auto& [t, shape] : tables) {
    if (shape.hasKey || shape.columns.empty() || !filter_(t)) continue;
    const std::string log = QuoteName(LogTable(t));
    std::string logCols, oldVals;
    for (std::size_t i = 0; i < shape.columns.size(); ++i) {
      logCols += ", c" + std::to_string(i);
      oldVals += ", OLD." + QuoteName(shape.columns[i]);
    }
    const std::string table = QuoteName(t);
    ddl += "CREATE TEMP TABLE IF NOT EXISTS " + log +
           " (undo_seq INTEGER PRIMARY KEY, undo_rid INTEGER, undo_present INTEGER" + logCols +
           ");";
    ddl += "CREATE TEMP TRIGGER IF NOT EXISTS " + QuoteName(TriggerName("ins", t)) +
           " AFTER INSERT ON " + table + when + " BEGIN INSERT INTO " + log +
           " (undo_rid, undo_present) VALUES (NEW.rowid, 0); END;";
    ddl += "CREATE TEMP TRIGGER IF NOT EXISTS " + QuoteName(TriggerName("upd", t)) +
           " AFTER UPDATE ON " + table + when + " BEGIN INSERT INTO " + log +
           " (undo_rid, undo_present" + logCols + ") VALUES (OLD.rowid, 1" + oldVals +
           "); INSERT INTO " + log +
           " (undo_rid, undo_present) SELECT NEW.rowid, 0 WHERE NEW.rowid IS NOT OLD.rowid; "
           "END;";
    ddl += "CREATE TEMP TRIGGER IF NOT EXISTS " + QuoteName(TriggerName("del", t)) +
           " AFTER DELETE ON " + table + when + " BEGIN INSERT INTO " + log +
           " (undo_rid, undo_present" + logCols + ") VALUES (OLD.rowid, 1" + oldVals + "); END;";
    ddl += "DELETE FROM temp." + log + ";";
    r->logged.push_back({t, std::move(shape.columns)});
  }
  ddl += "RELEASE tarno_undo_setup;";
  try {
    db.ExecuteRaw(ddl);
  } catch (...) {
    try {
      db.ExecuteRaw("ROLLBACK TO tarno_undo_setup; RELEASE tarno_undo_setup;");
    } catch (...) {}
    throw;
  }

  // The tables with a key: the session extension.
  rc = sqlite3session_create(db.Handle(), "main", &r->session);
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

  SetRecording(db.Handle(), true);
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
  if (n > 0)
    pendingChangesets_.emplace_back(static_cast<const char*>(p), static_cast<std::size_t>(n));
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

    // Rows of this table that another connection of the operation already gave.
    std::map<std::int64_t, std::size_t> earlier;
    for (std::size_t i = 0; i < pendingRows_.size(); ++i)
      if (EqualsNoCase(pendingRows_[i].table, l.table)) earlier.emplace(pendingRows_[i].rowid, i);
    std::vector<std::size_t> unchanged;

    RowReader reader(db, l.table, l.columns);
    for (std::int64_t rid : order) {
      std::optional<std::vector<Value>> now = reader.Read(rid);
      // A row changed through two connections of one operation: the state
      // before is the one found first (the first connection whose level
      // closed), the state after the latest.
      if (auto e = earlier.find(rid); e != earlier.end()) {
        RowidChange& same = pendingRows_[e->second];
        same.after = std::move(now);
        if (same.after == same.before) unchanged.push_back(e->second);
        continue;
      }
      if (now == first[rid]) continue;
      pendingRows_.push_back({l.table, l.columns, rid, std::move(first[rid]), std::move(now)});
    }
    std::sort(unchanged.rbegin(), unchanged.rend());
    for (std::size_t i : unchanged)
      pendingRows_.erase(pendingRows_.begin() + static_cast<std::ptrdiff_t>(i));
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
    SetRecording(r.db->Handle(), false);
    if (!discard && !failure) {
      try {
        Harvest(r);
      } catch (...) {
        failure = std::current_exception();
      }
    }
    // Discarded: the logs are emptied by the next Begin on this connection.
    r.DeleteSession();
    it = recorders_.erase(it);
  }
  --depth_;

  if (failure) {
    // The operation cannot be recorded: its changes are not in the history (an
    // undo of an earlier entry that meets them reports a conflict), and a part
    // of it is not recorded either.
    pendingFailed_ = true;
  }
  if (outermost && pendingFailed_) {
    pendingName_.clear();
    pendingChangesets_.clear();
    pendingRows_.clear();
    pendingFailed_ = false;
  }
  if (failure) std::rethrow_exception(failure);
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

// Moves rows from the state `from` to `to`, each only if the file still has it as
// `from` (for an update: in the fields that differ). The statements of a table are
// prepared once for all its rows.
class RowApplier {
 public:
  explicit RowApplier(Database& db) : db_(db) {}

  // The conflict, empty when none.
  std::string Apply(const RowidChange& c, const std::optional<std::vector<Value>>& from,
                    const std::optional<std::vector<Value>>& to) {
    Table& t = For(c);
    if (!t.problem.empty()) return t.problem;
    const std::optional<std::vector<Value>> now = t.reader->Read(c.rowid);

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
      auto it = t.updates.find(sets);
      if (it == t.updates.end())
        it = t.updates
                 .emplace(sets,
                          db_.PrepareRaw("UPDATE " + t.name + " SET " + sets + " WHERE rowid = ?" +
                                         std::to_string(changed.size() + 1)))
                 .first;
      Statement& st = it->second;
      st.Reset();
      for (std::size_t k = 0; k < changed.size(); ++k)
        st.Bind(static_cast<int>(k + 1), (*to)[changed[k]]);
      st.Bind(static_cast<int>(changed.size() + 1), c.rowid);
      st.Run();
    } else if (from) {
      if (!now) return "a row of table " + c.table + " is gone";
      if (*now != *from) return "a row of table " + c.table + " has other values";
      if (!t.remove.IsValid())
        t.remove = db_.PrepareRaw("DELETE FROM " + t.name + " WHERE rowid = ?1");
      t.remove.Reset();
      t.remove.Bind(1, c.rowid);
      t.remove.Run();
    } else if (to) {
      if (now) return "a row of table " + c.table + " is already there";
      if (!t.insert.IsValid()) {
        std::string marks = "?1";
        for (std::size_t i = 0; i < c.columns.size(); ++i) marks += ", ?" + std::to_string(i + 2);
        t.insert = db_.PrepareRaw("INSERT INTO " + t.name + " (rowid, " + ColumnList(c.columns) +
                                  ") VALUES (" + marks + ")");
      }
      t.insert.Reset();
      t.insert.Bind(1, c.rowid);
      for (std::size_t i = 0; i < c.columns.size(); ++i)
        t.insert.Bind(static_cast<int>(i + 2), (*to)[i]);
      t.insert.Run();
    }
    return {};
  }

 private:
  struct Table {
    std::string name;     // main."Table"
    std::string problem;  // the table is gone or has other fields
    std::optional<RowReader> reader;
    Statement remove, insert;
    std::map<std::string, Statement> updates;  // by their SET list
  };

  Table& For(const RowidChange& c) {
    auto it = tables_.find(c.table);
    if (it != tables_.end()) return it->second;
    Table& t = tables_[c.table];
    t.name = "main." + QuoteName(c.table);
    const TableShape shape = ShapeOf(db_, c.table);
    if (shape.columns.empty()) {
      t.problem = "table " + c.table + " is gone";
    } else if (shape.columns.size() != c.columns.size() ||
               !std::equal(shape.columns.begin(), shape.columns.end(), c.columns.begin(),
                           EqualsNoCase)) {
      t.problem = "the fields of table " + c.table + " have changed";
    } else {
      t.reader.emplace(db_, c.table, c.columns);
    }
    return t;
  }

  Database& db_;
  std::map<std::string, Table> tables_;
};

}  // namespace

bool UndoHistory::Apply(Database& db, bool undo) {
  std::vector<UndoEntry>& from = undo ? undo_ : redo_;
  std::vector<UndoEntry>& to = undo ? redo_ : undo_;
  if (from.empty() || depth_ > 0) return false;
  const UndoEntry& e = from.back();
  const std::string path = db.Path();

  std::string conflict;
  Transaction tx(db);
  {
    RowApplier rows(db);
    if (undo) {
      for (auto it = e.rows.rbegin(); it != e.rows.rend() && conflict.empty(); ++it)
        conflict = rows.Apply(*it, it->after, it->before);
    } else {
      for (auto it = e.rows.begin(); it != e.rows.end() && conflict.empty(); ++it)
        conflict = rows.Apply(*it, it->before, it->after);
    }
  }  // its statements are finished before the savepoint ends

  if (conflict.empty() && !e.changeset.empty()) {
    std::string cs = e.changeset;
    if (undo) {
      int n = 0;
      void* p = nullptr;
      int rc = sqlite3changeset_invert(static_cast<int>(cs.size()), cs.data(), &n, &p);
      if (rc != SQLITE_OK)
        throw StoreError("an entry of the edit history cannot be read", path, rc);
      cs.assign(static_cast<const char*>(p), static_cast<std::size_t>(n));
      sqlite3_free(p);
    }
    // A table whose fields changed would be passed over by the apply: it counts
    // as a conflict.
    for (const auto& [table, columns] : ChangesetTables(cs, path)) {
      const TableShape shape = ShapeOf(db, table);
      if (shape.columns.empty())
        conflict = "table " + table + " is gone";
      else if (static_cast<int>(shape.columns.size()) != columns)
        conflict = "the fields of table " + table + " have changed";
      if (!conflict.empty()) break;
    }
    if (conflict.empty()) {
      ApplyContext ctx;
      int rc = sqlite3changeset_apply(db.Handle(), static_cast<int>(cs.size()), cs.data(), nullptr,
                                      AbortOnConflict, &ctx);
      if (!ctx.conflict.empty())
        conflict = ctx.conflict;
      else if (rc != SQLITE_OK)
        db.Fail(rc);  // the savepoint rolls back
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
