#pragma once
// The project schema at version 123, held as data, and the creation of a new
// project file.
//
// ProjectSchema() lists the 24 tables in their order of creation, each with
// its fields in their order; this order is what `select *` and the generic
// table viewer show. The data is the single source of truth: the DDL below is
// generated from it and the tests compare SQLite's own catalogue against it.
//
// Mapping of the field types to SQLite (declared type -> affinity):
//   Boolean    BOOLEAN      numeric; 1 = True, 0 = False, CHECK IN (0,1)
//   Integer    SMALLINT     integer; CHECK between -32768 and 32767
//   Long       INTEGER      integer; CHECK between -2^31 and 2^31-1
//                           (auto-increment: INTEGER PRIMARY KEY AUTOINCREMENT)
//   Double     DOUBLE       real
//   Date       DATETIME     ISO-8601 text 'YYYY-MM-DD HH:MM:SS'
//   Text(n)    VARCHAR(n)   text COLLATE NOCASE; CHECK length <= n
//   Text       TEXT         text COLLATE NOCASE; no limit
// Required -> NOT NULL, and for text also CHECK(length > 0).
// Colour defaults given by index are stored as the packed RGB value of the
// classic 16-colour table (ClassicColour()).

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarno {

class Database;

inline constexpr int kProjectVersion = 123;

enum class FieldType { Boolean, Integer, Long, Double, Date, Text };

// Where a field's default comes from.
enum class DefaultKind {
    None,              // no default
    Literal,           // defaultValue holds the value as written: "0", "-100",
                       // "True", "__NONE__", "" (empty text), "1" (text "1")
    ColourIndex,       // defaultValue holds an index of the 16-colour table
    BasemapMetersAnswer,  // the new-project wizard's answer (Boolean)
    ComputeMetersAnswer,  // the new-project wizard's answer (Boolean)
    CurrentDirectory,  // the process's current directory at creation
};

struct FieldDef {
    std::string_view name;
    FieldType type;
    int size;                    // Text: maximum characters, 0 = no size
    DefaultKind defaultKind;
    std::string_view defaultValue;
    bool required;
    bool autoIncrement;
    bool variable;               // variable-length text field
};

struct IndexDef {
    std::string_view name;   // the index's name within its table
    std::string_view field;  // the one indexed field
    bool primary;
    bool unique;
};

struct TableDef {
    std::string_view name;
    std::optional<IndexDef> index;
    std::span<const FieldDef> fields;
};

// The 24 tables, in the order of creation.
std::span<const TableDef> ProjectSchema();
// Finds a table or a field by name, without regard to case; nullptr if absent.
const TableDef* FindTable(std::string_view name);
const FieldDef* FindField(const TableDef& table, std::string_view name);

// Packed RGB (red + 256*green + 65536*blue) of the classic 16-colour table,
// index 0 to 15. Throws std::out_of_range for other indexes.
std::int64_t ClassicColour(int index);

// The values that are fixed only when a file is created.
struct CreationContext {
    bool basemapMeters = true;
    bool computeMeters = true;
    std::string currentDirectory;  // TARNOBasePath's default
};

// Declared SQLite type of a field ("BOOLEAN", "SMALLINT", "INTEGER",
// "DOUBLE", "DATETIME", "VARCHAR(32)", "TEXT").
std::string SqlType(const FieldDef& field);
// The SQL literal of a field's default (e.g. "0", "1", "'__NONE__'",
// "8388608"), or nothing when it has none.
std::optional<std::string> DefaultSql(const FieldDef& field, const CreationContext& ctx);
// One column definition, with type, default, NOT NULL and CHECKs; usable in
// CREATE TABLE and in ALTER TABLE ... ADD COLUMN (upgrade).
std::string ColumnDefinitionSql(const TableDef& table, const FieldDef& field,
                                const CreationContext& ctx);
std::string CreateTableSql(const TableDef& table, const CreationContext& ctx);
// CREATE INDEX statement for the table's index, or "" when it has none (or
// when the index is the auto-increment key itself). SQLite index names are
// global to the file, so the index is named "<Table>_<Index>".
std::string CreateIndexSql(const TableDef& table);
std::string SqliteIndexName(const TableDef& table);

// Creates a new project file at `path`, in this order: the file; each table
// of ProjectSchema() with its index; the Model row of defaults right after
// Model (BasemapMeters and ComputeMeters defaulting to the answers); the
// Project row right after Project with Updated = now and TARNOBasePath
// defaulting to the current directory; then the description. Throws
// StoreError on any failure (also if the file exists); a half-made file may
// be left behind.
void DBNewDatabase(const std::filesystem::path& path, std::string_view description,
                   bool basemapMeters, bool computeMeters);

// The schema version of an open project: "select ProjectVersion from
// Project;". A file whose Project table lacks the field counts as 100.
// Throws StoreError when the query fails for another reason (no Project
// table, no row).
int ReadProjectVersion(Database& db);

// The present local date and time as stored in Date fields.
std::string NowAsStoredDate();

}  // namespace tarno
