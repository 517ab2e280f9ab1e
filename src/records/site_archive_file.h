#pragma once
// The site archive file (".esa"): a UTF-8 text file, one line per row, values
// separated by tabs, so that any text tool can read it (docs/site-archive.md
// describes it). The first line names the format and its version; each table
// starts with a line naming it and its row count and a line naming its columns;
// the last line, "end<TAB><tables>", tells a whole file from a cut one.
#include <string>

#include "app/message_sink.h"
#include "records/site_archive_content.h"

namespace sb {

constexpr const char* kSiteArchiveFormat = "Soilbench site archive";
constexpr int kSiteArchiveVersion = 1;

// The file's text for the content.
std::string siteArchiveText(const site_archive_content& content);
// Reads an archive; false with "ERROR, site archive "<path>" line N: ..." when
// the file is cut short, of another format or a newer version, or damaged.
bool readSiteArchive(const std::string& path, site_archive_content& content, message_sink& errors);
bool parseSiteArchive(const std::string& text, const std::string& path, site_archive_content& content,
                      message_sink& errors);

}  // namespace sb
