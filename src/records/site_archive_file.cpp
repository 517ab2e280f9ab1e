#include "records/site_archive_file.h"

#include <charconv>
#include <cmath>

#include "app/text_file.h"
#include "app/number_text.h"
#include "app/text_format.h"

namespace sb {

namespace {

// Tabs, line ends and backslashes inside a text value are written as \t, \n,
// \r and \\, so that a row stays one line.
std::string escaped(const std::string& text) {
    std::string out;
    out.reserve(text.size());
    for (char c : text) {
        switch (c) {
            case '\\':
                out += "\\\\";
                break;
            case '\t':
                out += "\\t";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            default:
                out += c;
        }
    }
    return out;
}

bool unescaped(std::string_view text, std::string& out) {
    out.clear();
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out += text[i];
            continue;
        }
        if (++i == text.size()) return false;
        switch (text[i]) {
            case '\\':
                out += '\\';
                break;
            case 't':
                out += '\t';
                break;
            case 'n':
                out += '\n';
                break;
            case 'r':
                out += '\r';
                break;
            default:
                return false;
        }
    }
    return true;
}

bool parseNumber(std::string_view text, double& value) {
    auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    return result.ec == std::errc() && result.ptr == text.data() + text.size() && std::isfinite(value);
}

// Walks the lines of one file, telling the line number of each problem.
class archive_parser {
public:
    archive_parser(const std::string& text, const std::string& path, message_sink& errors)
        : text_(text), path_(path), errors_(errors) {}

    bool parse(site_archive_content& content) {
        std::vector<std::string_view> head;
        if (!nextLine(head) || head.size() != 2 || head[0] != kSiteArchiveFormat)
            return fail("this is not a site archive (its first line is not \"%s<TAB>version\")", kSiteArchiveFormat);
        long version = 0;
        if (!wholeNumber(head[1], version) || version < 1) return fail("the format version is not a number");
        if (version > kSiteArchiveVersion)
            return fail(
                "the archive is of format version %ld; this program reads version %d: import it with a newer "
                "Soilbench",
                version, kSiteArchiveVersion);
        long tables = 0;
        std::vector<std::string_view> line;
        while (nextLine(line)) {
            if (line[0] == "end") return finish(line, tables, content);
            if (!table(line, content)) return false;
            ++tables;
        }
        return fail("the file ends without its \"end\" line: it is cut short");
    }

private:
    template <class... Args>
    bool fail(const char* format, Args... args) {
        std::string text = strprintf("ERROR, site archive \"%s\" line %ld: ", path_.c_str(), lineNumber_);
        appendf(text, format, args...);
        errors_.error(text + ".\n");
        return false;
    }

    // At the end of the file, the line number becomes that of the missing line.
    bool nextLine(std::vector<std::string_view>& out) {
        if (pos_ >= text_.size()) {
            if (!atEnd_) ++lineNumber_;
            atEnd_ = true;
            return false;
        }
        size_t end = text_.find('\n', pos_);
        if (end == std::string::npos) end = text_.size();
        std::string_view line(text_.data() + pos_, end - pos_);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        pos_ = end + 1;
        ++lineNumber_;
        out = splitFieldViews(line, '\t');
        return true;
    }

    static bool wholeNumber(std::string_view text, long& value) {
        auto result = std::from_chars(text.data(), text.data() + text.size(), value);
        return result.ec == std::errc() && result.ptr == text.data() + text.size();
    }

    bool finish(const std::vector<std::string_view>& line, long tables, site_archive_content& content) {
        long said = 0;
        if (line.size() != 2 || !wholeNumber(line[1], said) || said != tables)
            return fail("the \"end\" line should count %ld tables", tables);
        const int id = tableDef(table_id::control_records).fieldIndex("ID");
        for (const table_record& row : content.table(table_id::control_records).rows)
            content.records.push_back(row.integer(id));
        if (content.records.empty()) return fail("the archive holds no control record");
        std::vector<std::string_view> rest;
        if (nextLine(rest) && !(rest.size() == 1 && rest[0].empty() && pos_ >= text_.size()))
            return fail("there is more after the \"end\" line");
        return true;
    }

    bool findTable(std::string_view name, table_id& id) {
        for (int i = 0; i < kTableCount; ++i)
            if (tableName(static_cast<table_id>(i)) == name) {
                id = static_cast<table_id>(i);
                return travelsInArchive(id) || fail("table \"%s\" does not belong in a site archive", tableName(id));
            }
        const std::string text(name);
        return fail("there is no table \"%s\" in a project", text.c_str());
    }

    bool table(const std::vector<std::string_view>& line, site_archive_content& content) {
        table_id id{};
        long rows = 0;
        if (line.size() != 3 || line[0] != "table" || !wholeNumber(line[2], rows) || rows < 0)
            return fail("a \"table<TAB>name<TAB>rows\" line was expected");
        if (!findTable(line[1], id)) return false;
        if (content.find(id)) return fail("table \"%s\" comes twice", tableName(id));
        std::vector<int> columns;
        if (!columnLine(id, columns)) return false;
        archive_table& held = content.table(id);
        for (long r = 0; r < rows; ++r) {
            std::vector<std::string_view> values;
            if (!nextLine(values))
                return fail("the file ends after %ld of the %ld rows of table \"%s\": it is cut short", r, rows,
                            tableName(id));
            table_record row(id);
            if (!fillRow(values, columns, row)) return false;
            held.rows.push_back(std::move(row));
        }
        return true;
    }

    bool columnLine(table_id id, std::vector<int>& columns) {
        std::vector<std::string_view> line;
        if (!nextLine(line)) return fail("the file ends before the columns of table \"%s\"", tableName(id));
        if (line[0] != "columns") return fail("a \"columns\" line was expected");
        for (size_t i = 1; i < line.size(); ++i) {
            const std::string name(line[i]);
            const int column = tableDef(id).fieldIndex(name);
            if (column < 0) return fail("table \"%s\" has no column \"%s\"", tableName(id), name.c_str());
            columns.push_back(column);
        }
        return true;
    }

    bool fillRow(const std::vector<std::string_view>& values, const std::vector<int>& columns, table_record& row) {
        if (values.size() != columns.size())
            return fail("%zu values where table \"%s\" has %zu columns", values.size(), tableName(row.table()),
                        columns.size());
        std::string text;
        for (size_t i = 0; i < columns.size(); ++i) {
            const int column = columns[i];
            const char* name = tableDef(row.table()).fields()[static_cast<size_t>(column)].name.c_str();
            double number = 0;
            if (row.isText(column) ? !unescaped(values[i], text) : !parseNumber(values[i], number)) {
                const std::string value(values[i]);
                return fail("the value \"%s\" of column \"%s\" is not %s", value.c_str(), name,
                            row.isText(column) ? "a text" : "a number");
            }
            if (row.isText(column)) row.setText(column, text);
            else row.setNumber(column, number);
        }
        return true;
    }

    const std::string& text_;
    const std::string& path_;
    message_sink& errors_;
    size_t pos_ = 0;
    long lineNumber_ = 0;
    bool atEnd_ = false;
};

}  // namespace

std::string siteArchiveText(const site_archive_content& content) {
    std::string out = strprintf("%s\t%d\n", kSiteArchiveFormat, kSiteArchiveVersion);
    for (const archive_table& table : content.tables()) {
        const database_maker_table& def = tableDef(table.table);
        appendf(out, "table\t%s\t%zu\ncolumns", def.name().c_str(), table.rows.size());
        for (const auto& field : def.fields()) out += "\t" + field.name;
        out += '\n';
        for (const table_record& row : table.rows) {
            for (int c = 0; c < row.columnCount(); ++c) {
                if (c > 0) out += '\t';
                out += row.isText(c) ? escaped(row.text(c)) : shortestText(row.number(c));
            }
            out += '\n';
        }
    }
    appendf(out, "end\t%zu\n", content.tables().size());
    return out;
}

bool parseSiteArchive(const std::string& text, const std::string& path, site_archive_content& content,
                      message_sink& errors) {
    return archive_parser(text, path, errors).parse(content);
}

bool readSiteArchive(const std::string& path, site_archive_content& content, message_sink& errors) {
    std::string text;
    if (!readTextFile(path, text, errors, strprintf("ERROR, cannot open site archive \"%s\".\n", path.c_str())))
        return false;
    return parseSiteArchive(text, path, content, errors);
}

}  // namespace sb
