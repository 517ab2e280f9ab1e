#include "db/db_status.h"

#include "app/text_format.h"

namespace sb {

namespace {

struct status_message {
    status_code code;
    const char* text;  // a printf format when it takes the code
};

const status_message kMessages[] = {
    {0x80004005, "Unspecified error: %lX\n"},
    {0x80004002, "No such interface supported.\n"},
    {0x8000FFFF, "ITransaction::Commit or ITransaction::Abort was called and the object is in a zombie state.\n"},
    {0x800401F0, "CoInitialize has not been called.\n"},
    {0x800401F3, "ERROR %lX Invalid class string (driver for x64?)\n"},
    {0x80040E00, "hAccessor was invalid.\n"},
    {0x80040E04, "Invalid row handle.\n"},
    {0x80040E06, "The rowset was chaptered and hChapter was invalid.\n"},
    {0x80040E07,
     "Data or literal value could not be converted to the type of the column in the data source, "
     "and the provider was unable to determine which columns could not be converted.  Data "
     "overflow or sign mismatch was not the cause.\n"},
    {0x80040E0E, "Invalid bookmark.\n"},
    {0x80040E10, "No value given for one or more required parameters.\n"},
    {0x80040E14, "One or more errors occurred during processing of command.\n"},
    {0x80040E1D, "Requested conversion is not supported.\n"},
    {0x80040E21,
     "An error occurred while setting data for one or more columns and data was not successfully "
     "set for any columns.\n"
     "To determine the columns for which values were invalid, the consumer checks the status "
     "values.\n"
     "For a list of status values that can be returned by this method, see \"Status Values Used "
     "When Setting Data\" in \"Status\" in Chapter 6.\n"},
    {0x80040E25, "All HROWs must be released before new ones can be obtained.\n"},
    {0x80040E2F, "A specified value violated the integrity constraints for a column or table.\n"},
    {0x80040E37, "The specified table does not exist.\n"},
    {0x80040E4B, "The specified accessor was not a row accessor or was a reference accessor.\n"},
    {0x80040E4D, "Authentication failed.\n"},
    {0x80040E4E, "The change was canceled during notification; no columns are changed.\n"},
    {0x80040E55, "The specified column did not exist.\n"},
    {0x8007000E, "The provider was unable to allocate sufficient memory in which to instantiate the row.\n"},
    {0x80070057, "pData was a null pointer and hAccessor was not a null accessor.\n"},
    {0x00040EC6, "Reached start or end of rowset or chapter.\n"},
    {0x00040EDA,
     "An error occurred while setting data for one or more columns, but data was successfully set "
     "for at least one column.\n"},
};

// The messages that carry the code are bounded like the fixed buffers users have
// always seen them in: 49 characters, 127 for the class-string message.
std::string withCode(const char* format, status_code code, size_t limit) {
    std::string text = strprintf(format, static_cast<unsigned long>(code));
    if (text.size() > limit) text.resize(limit);
    return text;
}

}  // namespace

void appendStatusText(const db_status& status, std::string& errors) {
    const status_message* found = nullptr;
    for (const auto& message : kMessages)
        if (message.code == status.code) found = &message;
    if (!found) errors += withCode("Other error: %lX\n", status.code, 49);
    else if (status.code == 0x80004005) errors += withCode(found->text, status.code, 49);
    else if (status.code == 0x800401F3) errors += withCode(found->text, status.code, 127);
    else errors += found->text;
    for (const std::string& description : status.descriptions) errors += description + "\n";
}

void appendStatusText(const db_status& status, message_sink& messages, message_severity severity) {
    std::string text;
    appendStatusText(status, text);
    messages.add(severity, std::move(text));
}

bool readToTheEnd(const db_status& last, const char* table, message_sink& errors) {
    if (!last.failed()) return true;
    errors.errorf("ERROR, unable to read table [%s]\n", table);
    appendStatusText(last, errors);
    return false;
}

}  // namespace sb
