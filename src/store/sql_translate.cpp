// Translation of the program's Jet-dialect SQL texts to SQLite.
//
// The texts are tokenised (string literals, bracketed names, words, other
// characters) so that no rewrite ever touches the inside of a literal. The
// rewrites, in order:
//   - trailing blanks and ';' are dropped;
//   - DELETE * FROM x           -> DELETE FROM x
//   - "text"                    -> 'text'   (Jet reads double quotes as a string)
//   - True / False (any case)   -> 1 / 0    (the stored boolean values)
//   - [not] like '<pattern>'    -> the pattern with '*' -> '%', '?' -> '_', and a
//                                  literal '%', '_' or '\' escaped (ESCAPE '\');
//                                  '#' and '[...]' have no SQLite equivalent and
//                                  are refused with an error
//   - an alias defined by "expr as A" in a select list and used by a later item
//     of the same list (select (5-x) as dx, dx*dx as r2) is replaced there by
//     "(expr)", since SQLite resolves aliases only in WHERE and ORDER BY.
// Everything else passes unchanged: ORDER BY ordinals, [bracketed names],
// inner joins, subqueries and INSERT INTO ... SELECT are SQLite as they stand.

#include "store/database.h"

#include <cctype>
#include <map>
#include <string>
#include <vector>

namespace tarno {

namespace {

enum class Tok { Space, Word, String, Bracket, Other };

struct Token {
    Tok kind;
    std::string text;   // text to emit
    std::string value;  // decoded content of a string literal
};

bool IsWordChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

std::string Lower(std::string_view s) {
    std::string r(s);
    for (char& c : r) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return r;
}

std::string QuoteSingle(std::string_view v) {
    std::string r = "'";
    for (char c : v) {
        if (c == '\'') r += "''";
        else r += c;
    }
    r += "'";
    return r;
}

[[noreturn]] void Refuse(const std::string& why, std::string_view sql) {
    throw StoreError(why + " in SQL: " + std::string(sql), "");
}

std::vector<Token> Tokenise(std::string_view sql) {
    std::vector<Token> out;
    std::size_t i = 0, n = sql.size();
    while (i < n) {
        char c = sql[i];
        if (std::isspace(static_cast<unsigned char>(c))) {
            std::size_t j = i;
            while (j < n && std::isspace(static_cast<unsigned char>(sql[j]))) ++j;
            out.push_back({Tok::Space, std::string(sql.substr(i, j - i)), {}});
            i = j;
        } else if (c == '\'' || c == '"') {
            // A quote doubled inside the literal stands for itself.
            std::string value;
            std::size_t j = i + 1;
            bool closed = false;
            while (j < n) {
                if (sql[j] == c) {
                    if (j + 1 < n && sql[j + 1] == c) {
                        value += c;
                        j += 2;
                        continue;
                    }
                    closed = true;
                    ++j;
                    break;
                }
                value += sql[j++];
            }
            if (!closed) Refuse("Unterminated string literal", sql);
            out.push_back({Tok::String, QuoteSingle(value), value});
            i = j;
        } else if (c == '[') {
            std::size_t j = sql.find(']', i);
            if (j == std::string_view::npos) Refuse("Unterminated bracketed name", sql);
            out.push_back({Tok::Bracket, std::string(sql.substr(i, j - i + 1)), {}});
            i = j + 1;
        } else if (IsWordChar(c)) {
            std::size_t j = i;
            while (j < n && IsWordChar(sql[j])) ++j;
            out.push_back({Tok::Word, std::string(sql.substr(i, j - i)), {}});
            i = j;
        } else {
            out.push_back({Tok::Other, std::string(1, c), {}});
            ++i;
        }
    }
    return out;
}

// Index of the next / previous non-space token, or -1.
int NextSig(const std::vector<Token>& t, int i) {
    for (int j = i + 1; j < static_cast<int>(t.size()); ++j)
        if (t[j].kind != Tok::Space) return j;
    return -1;
}
int PrevSig(const std::vector<Token>& t, int i) {
    for (int j = i - 1; j >= 0; --j)
        if (t[j].kind != Tok::Space) return j;
    return -1;
}

bool IsWord(const Token& t, std::string_view lowerWord) {
    return t.kind == Tok::Word && Lower(t.text) == lowerWord;
}

std::string LikePattern(const std::string& jet, std::string_view sql, bool& escaped) {
    std::string r;
    for (char c : jet) {
        switch (c) {
            case '*': r += '%'; break;
            case '?': r += '_'; break;
            case '%':
            case '_':
            case '\\':
                r += '\\';
                r += c;
                escaped = true;
                break;
            case '#': Refuse("The LIKE wildcard '#' (one digit) is not supported", sql);
            case '[': Refuse("The LIKE character list '[...]' is not supported", sql);
            default: r += c;
        }
    }
    return r;
}

// Replaces, within each select list, later uses of an alias by its expression.
void InlineSelectAliases(std::vector<Token>& t) {
    const int n = static_cast<int>(t.size());
    for (int s = 0; s < n; ++s) {
        if (!IsWord(t[s], "select")) continue;
        std::map<std::string, std::string> aliases;  // lower-case name -> "(expr)"
        int depth = 0;
        int itemStart = s + 1;
        for (int i = s + 1; i <= n; ++i) {
            bool end = i == n;
            if (!end) {
                const Token& k = t[i];
                if (k.kind == Tok::Other && k.text == "(") ++depth;
                else if (k.kind == Tok::Other && k.text == ")") {
                    if (--depth < 0) end = true;
                } else if (depth == 0 && IsWord(k, "from")) {
                    end = true;
                }
            }
            bool comma = !end && depth == 0 && t[i].kind == Tok::Other && t[i].text == ",";
            if (end || comma) {
                // Item [itemStart, i): is it "expr as alias"?
                int last = PrevSig(t, i);
                int asTok = last >= itemStart ? PrevSig(t, last) : -1;
                if (last >= itemStart && asTok >= itemStart && IsWord(t[asTok], "as") &&
                    (t[last].kind == Tok::Word || t[last].kind == Tok::Bracket)) {
                    std::string expr;
                    for (int k = itemStart; k < asTok; ++k) expr += t[k].text;
                    std::size_t a = expr.find_first_not_of(" \t\r\n");
                    std::size_t b = expr.find_last_not_of(" \t\r\n");
                    if (a != std::string::npos) expr = expr.substr(a, b - a + 1);
                    std::string name = t[last].text;
                    if (t[last].kind == Tok::Bracket) name = name.substr(1, name.size() - 2);
                    if (!expr.empty()) aliases[Lower(name)] = "(" + expr + ")";
                }
                if (end) break;
                itemStart = i + 1;
                continue;
            }
            // A bare word naming an earlier alias: not qualified (x.dx), not a
            // function call (dx(...)), and not the alias being defined.
            if (!aliases.empty() && t[i].kind == Tok::Word) {
                auto it = aliases.find(Lower(t[i].text));
                if (it == aliases.end()) continue;
                int p = PrevSig(t, i);
                int q = NextSig(t, i);
                if (p >= 0 && (IsWord(t[p], "as") || (t[p].kind == Tok::Other && t[p].text == ".")))
                    continue;
                if (q >= 0 && t[q].kind == Tok::Other && (t[q].text == "(" || t[q].text == "."))
                    continue;
                t[i].text = it->second;
            }
        }
    }
}

}  // namespace

std::string TranslateJetSql(std::string_view jetSql) {
    // Trailing blanks and semicolons.
    std::size_t end = jetSql.size();
    while (end > 0 && (std::isspace(static_cast<unsigned char>(jetSql[end - 1])) || jetSql[end - 1] == ';'))
        --end;
    std::string_view sql = jetSql.substr(0, end);
    std::vector<Token> t = Tokenise(sql);
    const int n = static_cast<int>(t.size());

    for (int i = 0; i < n; ++i) {
        Token& k = t[i];
        if (k.kind == Tok::Other && k.text == "*") {
            int p = PrevSig(t, i), q = NextSig(t, i);
            if (p >= 0 && q >= 0 && IsWord(t[p], "delete") && IsWord(t[q], "from")) {
                k.text.clear();
                // Drop the blank after the star as well: "DELETE FROM".
                if (i + 1 < n && t[i + 1].kind == Tok::Space) t[i + 1].text.clear();
            }
        } else if (k.kind == Tok::Word) {
            std::string w = Lower(k.text);
            int p = PrevSig(t, i);
            bool qualified = p >= 0 && t[p].kind == Tok::Other && t[p].text == ".";
            if ((w == "true" || w == "false") && !qualified) {
                k.text.assign(1, w == "true" ? '1' : '0');
            } else if (w == "like") {
                int q = NextSig(t, i);
                if (q >= 0 && t[q].kind == Tok::String) {
                    bool escaped = false;
                    std::string pat = LikePattern(t[q].value, sql, escaped);
                    t[q].text = QuoteSingle(pat);
                    if (escaped) t[q].text += " ESCAPE '\\'";
                }
            }
        }
    }

    InlineSelectAliases(t);

    std::string out;
    out.reserve(sql.size() + 16);
    for (const Token& k : t) out += k.text;
    return out;
}

}  // namespace tarno
