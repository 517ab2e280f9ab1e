#include "ui/doc_soilbench.h"

#include <QFileInfo>
#include <QTimer>

#include "app/text_format.h"
#include "db/database.h"
#include "db/project_location.h"
#include "records/list_control_record_proxies.h"
#include "records/new_project.h"
#include "records/tellura_control_record.h"
#include "ui/control_record_table_model.h"

namespace sb {

doc_soilbench::doc_soilbench(std::unique_ptr<database> db, QString path, bool prebuildList)
    : db_(std::move(db)),
      path_(std::move(path)),
      prebuildList_(prebuildList),
      list_(std::make_unique<list_control_record_proxies>()) {
    setObjectName(QString::fromLatin1(kTypeName));
}

doc_soilbench::~doc_soilbench() = default;

// The list is always attached step by step, so the first record shows at
// once even in a project of a hundred thousand records. With "Prebuild Control
// Record List" on, the rest of the list is then read in slices while the
// window is idle (the status bar counts "Scanning Records %ld"), instead of
// holding the window until every record has been read. Records are therefore
// numbered in ascending ID order either way.
bool doc_soilbench::attach(message_sink& errors) {
    const bool ok = list_->attach(db_.get(), false, errors);
    // Fills the placeholder handle of record 1, or empties the list of an empty table.
    if (ok) list_->first(errors);
    if (!records_) records_ = std::make_unique<control_record_table_model>(*list_);
    else records_->reset();
    if (ok) records_->readLastRuns(*db_);
    scanned_ = 0;
    if (ok && prebuildList_ && !prebuilding_) {
        prebuilding_ = true;  // one chain of slices at a time; a re-attach lets it run on
        QTimer::singleShot(0, this, &doc_soilbench::prebuildSlice);
    }
    return ok;
}

void doc_soilbench::prebuildSlice() {
    constexpr int kPagesPerSlice = 5;  // about a thousand records between window events
    constexpr long kStep = list_control_record_proxies::kProgressStep;
    message_sink errors;
    for (int i = 0; i < kPagesPerSlice && !records_->complete(); ++i) {
        if (!records_->fetchPage(errors)) {
            prebuilding_ = false;  // the table shows as far as it could be read
            return;
        }
        const long rows = records_->rowCount();
        if (rows / kStep != scanned_ / kStep)
            emit scanning(QString::fromStdString(strprintf("Scanning Records %ld", rows / kStep * kStep)));
        scanned_ = rows;
    }
    if (records_->complete()) {
        prebuilding_ = false;
        emit scanning(QString());
        return;
    }
    QTimer::singleShot(0, this, &doc_soilbench::prebuildSlice);
}

std::unique_ptr<doc_soilbench> doc_soilbench::create(const QString& path, bool prebuildList, message_sink& errors) {
    const std::string file = path.toStdString();
    auto db = createNewProject(file, errors);
    if (!db) return nullptr;
    std::unique_ptr<doc_soilbench> doc(new doc_soilbench(std::move(db), path, prebuildList));
    doc->attach(errors);
    doc->moveFirst(errors);
    return doc;
}

std::unique_ptr<doc_soilbench> doc_soilbench::open(const QString& path, bool prebuildList, message_sink& errors) {
    auto db = database::open(path.toStdString(), errors);
    if (!db) return nullptr;
    std::unique_ptr<doc_soilbench> doc(new doc_soilbench(std::move(db), path, prebuildList));
    doc->attach(errors);
    doc->moveFirst(errors);
    return doc;
}

QString doc_soilbench::title() const { return db_->location().onServer() ? shownPath() : QFileInfo(path_).fileName(); }

QString doc_soilbench::shownPath() const { return QString::fromStdString(db_->path()); }

int32_t doc_soilbench::currentId() const {
    const control_record_proxy* h = current_ >= 0 ? list_->at(current_ + 1) : nullptr;
    return h ? h->id : 0;
}

bool doc_soilbench::setCurrent(int row) {
    records_->syncRows();
    if (row < 0 || row >= records_->rowCount()) return false;
    current_ = row;
    emit currentChanged(row);
    return true;
}

bool doc_soilbench::moveFirst(message_sink& errors) {
    const control_record_proxy* h = list_->first(errors);
    return h && setCurrent(h->recordNumber - 1);
}

bool doc_soilbench::moveNext(message_sink& errors) {
    const control_record_proxy* from = list_->at(current_ + 1);
    const control_record_proxy* h = from ? list_->next(*from, errors) : nullptr;
    return h && setCurrent(h->recordNumber - 1);
}

bool doc_soilbench::movePrevious(message_sink& errors) {
    const control_record_proxy* from = list_->at(current_ + 1);
    const control_record_proxy* h = from ? list_->previous(*from, errors) : nullptr;
    return h && setCurrent(h->recordNumber - 1);
}

bool doc_soilbench::moveLast(message_sink& errors) {
    const control_record_proxy* h = list_->last(errors);
    return h && setCurrent(h->recordNumber - 1);
}

bool doc_soilbench::moveToNumber(int recordNumber, message_sink& errors) {
    if (recordNumber < 1) return false;
    const control_record_proxy* h = list_->at(recordNumber);
    if (!h) {
        // Step forward from the furthest handle held; the list stops at its end.
        const int held = static_cast<int>(list_->size());
        h = list_->forward(list_->at(held), recordNumber - held, errors);
        if (!h || h->recordNumber != recordNumber) return false;
    }
    return setCurrent(h->recordNumber - 1);
}

bool doc_soilbench::moveToId(int32_t id, message_sink& errors) {
    const control_record_proxy* h = list_->findId(id);
    // Not held yet: page on until it turns up or the list ends.
    while (!h && !records_->complete()) {
        if (!records_->fetchPage(errors)) return false;
        h = list_->findId(id);
    }
    return h && setCurrent(h->recordNumber - 1);
}

void doc_soilbench::refreshAll() {
    const int32_t keep = currentId();
    message_sink ignored;  // a failing re-read shows as an empty list, and the next command reports it
    attach(ignored);
    current_ = -1;
    if (!moveToId(keep, ignored) && !moveFirst(ignored)) emit currentChanged(-1);
    emit refreshed();
}

}  // namespace sb
