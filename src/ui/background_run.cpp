#include "ui/background_run.h"

#include <QThread>

namespace sb {

void run_feedback::setText(const std::string& text) { emit owner_.textChanged(QString::fromStdString(text)); }
void run_feedback::setStatus(const std::string& text) { emit owner_.statusChanged(QString::fromStdString(text)); }
void run_feedback::setPercent(int percent) { emit owner_.percentChanged(percent); }
bool run_feedback::cancelled() const { return owner_.cancel_.load(); }

background_run::background_run(QObject* parent) : QObject(parent) {}

background_run::~background_run() {
    cancel();
    wait();
    delete thread_;
}

bool background_run::start(job work) {
    if (running()) return false;
    if (thread_) {
        thread_->wait();
        delete thread_;
        thread_ = nullptr;
    }
    cancel_.store(false);
    thread_ = QThread::create([this, work = std::move(work)] {
        run_feedback feedback(*this);
        work(feedback);
    });
    // finished() is emitted from the worker; the queued connection brings it to
    // the window's thread after the job has returned.
    connect(thread_, &QThread::finished, this, &background_run::finished, Qt::QueuedConnection);
    thread_->start();
    return true;
}

bool background_run::running() const { return thread_ && thread_->isRunning(); }

void background_run::wait() {
    if (thread_) thread_->wait();
}

}  // namespace sb
