#include "view_models/settings/RecognitionViewModel.h"

#include "ai/speech/WhisperLanguages.h"
#include "ai/speech/WhisperSetup.h"
#include "audio/SpeechRecognizing.h"
#include "persistence/SettingsStore.h"
#include "view_models/settings/ChosenFile.h"

#include <QFileInfo>

namespace morvane {

using namespace Qt::StringLiterals;

RecognitionViewModel::RecognitionViewModel(SettingsStore &settings, WhisperSetup &setup,
                                           const SpeechRecognizing &packaged, QObject *parent)
    : QObject(parent)
    , m_settings(settings)
    , m_setup(setup)
    , m_packaged(packaged)
{
    connect(&setup, &WhisperSetup::changed, this, &RecognitionViewModel::changed);
    connect(&settings, &SettingsStore::speechModelPathChanged, this, &RecognitionViewModel::changed);
}

QString RecognitionViewModel::engine() const
{
    if (m_setup.isReady())
        return u"whisper.cpp with %1"_s.arg(QFileInfo(m_setup.found().modelPath).fileName());
    return m_packaged.isAvailable() ? u"PocketSphinx"_s : u"None"_s;
}

QString RecognitionViewModel::languages() const
{
    const bool isReady = m_setup.isReady();
    if (isReady && m_setup.found().model->knowsManyLanguages)
        return u"%1 languages, with punctuation. Your system's language is the one that is heard."_s.arg(
            WhisperLanguages::count);
    if (isReady)
        return u"English alone, with punctuation. A model without “.en” in its name knows %1 languages."_s
            .arg(WhisperLanguages::count);
    return m_packaged.isAvailable()
               ? u"American English alone, in lower case and without punctuation."_s
               : u"The package pocketsphinx-en-us, which understands English, is not installed."_s;
}

QString RecognitionViewModel::advice() const
{
    if (m_setup.isReady())
        return {};
    if (isBroken())
        return u"“%1” is gone, or is no model of whisper.cpp. Choose another, or use none."_s.arg(
            QFileInfo(m_settings.speechModelPath()).fileName());
    if (m_setup.found().program.isEmpty())
        return u"whisper.cpp understands more words and %1 languages, on this computer as well. Install it "
               u"so "
               "that its program whisper-server is on your PATH, and choose a model, such as "
               "ggml-base.bin."_s.arg(WhisperLanguages::count);
    return u"whisper-server is installed. Choose a model for it, such as ggml-base.bin, and it understands "
           u"more "
           "words and %1 languages."_s.arg(WhisperLanguages::count);
}

bool RecognitionViewModel::isBroken() const
{
    const WhisperSetup::Found &found = m_setup.found();
    return hasChosen() && found.modelPath == m_settings.speechModelPath() && !found.model;
}

bool RecognitionViewModel::hasChosen() const
{
    return !m_settings.speechModelPath().isEmpty();
}

void RecognitionViewModel::refresh()
{
    m_setup.refresh();
}

void RecognitionViewModel::choose(const QUrl &model)
{
    m_settings.setSpeechModelPath(ChosenFile::path(model));
}

void RecognitionViewModel::forget()
{
    m_settings.setSpeechModelPath({});
}

} // namespace morvane
