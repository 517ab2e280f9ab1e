#pragma once
// Runs long work (one model run or a whole run set) on a worker thread so the
// window stays live. The work reports through run_feedback, which may be
// called from the worker thread: texts and percentages reach the window as
// queued signals, and the cancel flag is a plain atomic the work polls.
#include <QObject>
#include <QString>
#include <atomic>
#include <functional>
#include <string>

class QThread;

namespace sb {

class background_run;

class run_feedback {
public:
    explicit run_feedback(background_run& owner) : owner_(owner) {}
    void setText(const std::string& text);    // e.g. "Running TELLURA #1 Record=1 ID=5"
    void setStatus(const std::string& text);  // e.g. "Run      1, Good=     1 "
    void setPercent(int percent);
    bool cancelled() const;

private:
    background_run& owner_;
};

class background_run : public QObject {
    Q_OBJECT
public:
    using job = std::function<void(run_feedback&)>;

    explicit background_run(QObject* parent = nullptr);
    ~background_run() override;  // cancels and waits for the worker

    // Starts the job on a new thread; false when one is still running.
    bool start(job work);
    bool running() const;
    void cancel() { cancel_.store(true); }
    bool cancelRequested() const { return cancel_.load(); }
    // Blocks until the worker ends (tests and shutdown).
    void wait();

signals:
    void textChanged(const QString& text);
    void statusChanged(const QString& text);
    void percentChanged(int percent);
    void finished();

private:
    friend class run_feedback;
    QThread* thread_ = nullptr;
    std::atomic<bool> cancel_{false};
};

}  // namespace sb
