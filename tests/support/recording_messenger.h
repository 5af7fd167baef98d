#pragma once

// Records what the user would have been told, and the progress shown, while installed.

#include <catalog/notify.h>

#include <QList>
#include <QStringList>

namespace testing {

class RecordingMessenger : public edw::IMessenger
{
public:
    RecordingMessenger() { edw::setMessenger(this); }
    ~RecordingMessenger() override { edw::setMessenger(nullptr); }
    void information(const QString& t, const QString& s) override { record("information", t, s); }
    void warning(const QString& t, const QString& s) override { record("warning", t, s); }
    void critical(const QString& t, const QString& s) override { record("critical", t, s); }

    QStringList kinds, titles, texts;

private:
    void record(const char* kind, const QString& title, const QString& text)
    {
        kinds << QString::fromLatin1(kind);
        titles << title;
        texts << text;
    }
};

class RecordingProgress : public edw::IProgress
{
public:
    void begin(const QString& c, int maximum) override
    {
        caption = c;
        this->maximum = maximum;
        ++begun;
    }
    void setValue(int value) override { values << value; }
    void keepAlive() override { ++alive; }
    void end() override { ++ended; }
    QString caption;
    int maximum = -1;
    int begun = 0;
    int ended = 0;
    int alive = 0;
    QList<int> values;
};

} // namespace testing
