// The edit history of the open project: Undo and Redo of the user's operations.
//
// Each user operation (add a well, delete a string, move a vertex, change the
// uniform flow) is recorded as one entry: the rows of the project file before and
// after it, across all its tables. Undo puts the rows back as they were before the
// operation; Redo puts them back as they were after it. The history lasts while the
// project stays open (ProjectSession attaches it to the file at open and clears it
// at close).
//
//     UndoScope scope(db, "Delete Well");  // the history attached to db's file
//     ... write through db ...
//     scope.Commit();                       // one entry, unless nothing changed
//
//     if (history.Undo()) InvalidateSolution();  // the caller treats it as an edit
//
// How it records. The project file's connections are opened per operation, so the
// history keeps no connection: an operation is recorded on the connection it writes
// through, from Begin to the outermost Commit, and the history keeps only what came
// out of it.
//  - Tables with a primary key (Polygons and Vertices, whose PID and VID are their
//    row keys) are recorded by SQLite's session extension; the entry keeps its
//    changeset.
//  - Tables without one (every element table, whose VID or PID has a unique index
//    but is no primary key, Model, Project, TextLabels, Basemaps, ...) are ignored
//    by the session extension of the SQLite we build against (it has no rowid key
//    option before 3.42), and its preupdate hook is taken by the session itself
//    (one hook a connection). For these the history puts
//    temporary triggers on the connection (TEMP triggers: nothing is written into the
//    file's schema) that log each changed row's rowid and former values into
//    temporary tables; at Commit the first logged state of each row is compared with
//    its state now, and the rows that differ are kept by rowid with their values
//    before and after.
// Either way the entry holds the net change of the operation: a row changed and
// changed back, or inserted and deleted again, is not in it, and changes rolled back
// by a transaction leave nothing (the logs are rolled back with them).
//
// What is left out: the solver's result tables (WLResults, LSResults, INResults,
// NFResults, TPResults, FIResults, and the lakes' LKResults) by default, as a solve
// is no edit; SetTableFilter changes the choice. Writes made outside an operation (a solve, the map window's
// position) are not recorded; they do not stop an undo unless they changed the same
// fields of the same rows.
//
// Conflicts. Before an undo or redo changes a row it checks that the row is as the
// entry left it (for an update: the fields the operation changed). When the file
// changed behind the history (another program, or this one writing outside an
// operation into the same fields), nothing is changed (the whole apply runs in one
// savepoint), the history is cleared and UndoConflictError says which table and
// operation. A transaction that the caller rolls back after the outermost Commit of
// an operation inside it leaves an entry that no longer matches the file: the same
// check catches it at the undo.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/database.h"

namespace tarno {

// An undo or redo that found the file changed behind the history. The history has
// been cleared; the file is as it was before the attempt.
class UndoConflictError : public StoreError {
 public:
  using StoreError::StoreError;
};

// The change of one row of a table without a primary key, by rowid: its values
// (in the table's column order) before and after; none where the row was absent.
struct RowidChange {
  std::string table;
  std::vector<std::string> columns;
  std::int64_t rowid = 0;
  std::optional<std::vector<Value>> before;
  std::optional<std::vector<Value>> after;
};

// One recorded operation.
struct UndoEntry {
  std::string name;               // "Delete Well"
  std::string changeset;          // the session changeset (tables with a key)
  std::vector<RowidChange> rows;  // the rows of tables without a key, in order
  bool Empty() const { return changeset.empty() && rows.empty(); }
};

// The tables an entry changes, each once, in name order.
std::vector<std::string> ChangedTables(const UndoEntry& entry);

class UndoHistory {
 public:
  // Whether a table is recorded.
  using TableFilter = std::function<bool(std::string_view table)>;

  UndoHistory();
  ~UndoHistory();
  UndoHistory(const UndoHistory&) = delete;
  UndoHistory& operator=(const UndoHistory&) = delete;

  // Makes this the history of the project file at `path` (found by Of() from a
  // Database of that file), starting empty. A file has one history: attaching
  // another to the same file takes the file from the first.
  void Attach(const std::string& path);
  // Clears the history and lets go of the file.
  void Detach();
  // The attached file; empty when none.
  const std::string& Path() const { return path_; }
  // The history attached to the file `db` is connected to; null when none.
  static UndoHistory* Of(const Database& db);

  // The tables recorded; by default all but the solver's result tables. Applies to
  // the operations begun after the call.
  void SetTableFilter(TableFilter filter);
  // The solver's result tables (compared without regard to case).
  static bool IsResultTable(std::string_view table);

  // One user operation. Begin starts recording the changes made through `db`; a
  // Begin inside an open operation joins it (its name is not used) and records
  // `db` too when that is another connection. Each Begin is closed by one Commit
  // or Abandon. The outermost Commit keeps the operation as one entry, unless it
  // changed nothing, and empties the redo list; the outermost Abandon forgets it.
  // An inner Commit or Abandon only closes its level: the outer operation decides.
  // The connections recorded must stay open until their level is closed.
  void Begin(Database& db, std::string name);
  void Commit();
  void Abandon();
  // Whether an operation is open (Begin without its Commit or Abandon).
  bool InOperation() const { return depth_ > 0; }

  bool CanUndo() const { return !undo_.empty(); }
  bool CanRedo() const { return !redo_.empty(); }
  // The names of the entries Undo and Redo would apply; empty when none.
  std::string UndoName() const;
  std::string RedoName() const;
  std::size_t UndoCount() const { return undo_.size(); }
  std::size_t RedoCount() const { return redo_.size(); }

  // Puts back the rows as they were before the last operation (Undo) or after the
  // last one undone (Redo). True when something was applied; false when there is
  // nothing to apply or an operation is open. Throws UndoConflictError (history
  // cleared, file unchanged) when the file no longer matches the entry, and
  // StoreError when the file cannot be written. The overloads without a Database
  // open the attached file for the time of the call.
  bool Undo();
  bool Redo();
  bool Undo(Database& db);
  bool Redo(Database& db);

  // Forgets every entry (an open operation stays open).
  void Clear();

  // The entries Undo and Redo would apply; null when none.
  const UndoEntry* NextUndo() const { return undo_.empty() ? nullptr : &undo_.back(); }
  const UndoEntry* NextRedo() const { return redo_.empty() ? nullptr : &redo_.back(); }
  // The entries, oldest first (for tests and diagnostics).
  const std::vector<UndoEntry>& UndoEntries() const { return undo_; }

 private:
  struct Recorder;
  void EndLevel(bool keep);
  void Harvest(Recorder& r);
  bool Apply(Database& db, bool undo);

  std::string path_;
  TableFilter filter_;
  std::vector<UndoEntry> undo_;
  std::vector<UndoEntry> redo_;

  // The open operation.
  int depth_ = 0;
  std::string pendingName_;
  std::vector<std::unique_ptr<Recorder>> recorders_;
  std::vector<std::string> pendingChangesets_;
  std::vector<RowidChange> pendingRows_;
  bool pendingFailed_ = false;  // a part could not be recorded: the whole is not
};

// One user operation as a scope: Begin on construction, Abandon on destruction
// unless Commit was called (an exception leaves nothing recorded at the outermost
// level).
class UndoScope {
 public:
  UndoScope(UndoHistory& history, Database& db, std::string name);
  // The history attached to `db`'s file; without one the scope records nothing.
  UndoScope(Database& db, std::string name);
  UndoScope(const UndoScope&) = delete;
  UndoScope& operator=(const UndoScope&) = delete;
  ~UndoScope();

  void Commit();
  void Abandon();
  UndoHistory* History() const { return history_; }

 private:
  UndoHistory* history_ = nullptr;
  bool open_ = false;
};

}  // namespace tarno
