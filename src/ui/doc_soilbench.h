#pragma once
// The document: one open project database, the lazily read list of its
// control records and which of them is current. Views attach to it and
// redraw on its signals; commands change it through the core library.
#include <QObject>
#include <QString>
#include <cstdint>
#include <memory>
#include <string>

#include "app/message_sink.h"

namespace sb {

class database;
class control_record_table_model;
class list_control_record_proxies;

class doc_soilbench : public QObject {
    Q_OBJECT
public:
    // How the document kind is known to the user: the name in window titles,
    // the type name (also the object name of every document) and the text the
    // file dialogs use for it.
    static constexpr const char* kDocumentName = "Sbench";
    static constexpr const char* kTypeName = "Soilbench.Document";
    static constexpr const char* kTypeDescription = "Sbench Document";

    ~doc_soilbench() override;

    // Makes a new project with every table and the default control record.
    // `prebuildList` is the "Prebuild Control Record List" setting: the whole
    // record list is read at once instead of step by step.
    static std::unique_ptr<doc_soilbench> create(const QString& path, bool prebuildList, message_sink& errors);
    static std::unique_ptr<doc_soilbench> open(const QString& path, bool prebuildList, message_sink& errors);

    database& db() { return *db_; }
    // The project as given when opened (a file, or a server URL that may hold a
    // password): for opening it again, never for showing.
    const QString& path() const { return path_; }
    // The project as titles show it: a file's name, or the URL without its password.
    QString title() const;
    // The project as messages and printouts name it: the path, or the URL without its password.
    QString shownPath() const;
    control_record_table_model& records() { return *records_; }
    list_control_record_proxies& list() { return *list_; }

    // 0-based row of the current record in the record list; -1 when the project has none.
    int currentRow() const { return current_; }
    int32_t currentId() const;
    int recordNumber() const { return current_ + 1; }

    // Navigation keeps the current record when a move fails; messages go to `errors`.
    bool moveFirst(message_sink& errors);
    bool moveNext(message_sink& errors);
    bool movePrevious(message_sink& errors);
    bool moveLast(message_sink& errors);
    bool moveToNumber(int recordNumber, message_sink& errors);  // 1-based position
    // False (and nothing appended) when no record has the ID.
    bool moveToId(int32_t id, message_sink& errors);

    // Re-reads the record list after records were added or removed and keeps the
    // current record where it still exists; tells every view to redraw.
    void refreshAll();

signals:
    void currentChanged(int row);
    void refreshed();
    // "Scanning Records %ld" while the prebuilt list is read; empty when it is done.
    void scanning(const QString& text);

private:
    doc_soilbench(std::unique_ptr<database> db, QString path, bool prebuildList);
    bool attach(message_sink& errors);
    // One slice of building the whole list in advance; re-armed until the list is complete.
    void prebuildSlice();
    bool setCurrent(int row);

    std::unique_ptr<database> db_;
    QString path_;
    bool prebuildList_;
    std::unique_ptr<list_control_record_proxies> list_;
    std::unique_ptr<control_record_table_model> records_;
    int current_ = -1;
    long scanned_ = 0;
    bool prebuilding_ = false;
};

}  // namespace sb
