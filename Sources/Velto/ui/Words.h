// The practice window's words for QML; see Wording.
#pragma once

#include "Wording.h"

#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Main thread only.
class Words : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(QString wordmark READ wordmark CONSTANT FINAL)
  Q_PROPERTY(QString subtitle READ subtitle CONSTANT FINAL)
  Q_PROPERTY(QString difficulty READ difficulty CONSTANT FINAL)
  Q_PROPERTY(QString actual READ actual CONSTANT FINAL)
  Q_PROPERTY(QString switchHint READ switchHint CONSTANT FINAL)
  Q_PROPERTY(QString keyHint READ keyHint CONSTANT FINAL)
  Q_PROPERTY(QString streak READ streak CONSTANT FINAL)
  Q_PROPERTY(QString today READ today CONSTANT FINAL)
  Q_PROPERTY(QString accuracy READ accuracy CONSTANT FINAL)
  Q_PROPERTY(QString mapTitle READ mapTitle CONSTANT FINAL)
  Q_PROPERTY(QString curveHint READ curveHint CONSTANT FINAL)
  Q_PROPERTY(QString drills READ drills CONSTANT FINAL)
  Q_PROPERTY(QString versions READ versions CONSTANT FINAL)
  Q_PROPERTY(QString materials READ materials CONSTANT FINAL)
  Q_PROPERTY(QString map READ map CONSTANT FINAL)

public:
  using QObject::QObject;

  // UTF-8 as Qt's text.
  [[nodiscard]] static QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
  }

  [[nodiscard]] static QString wordmark() { return text(Wording::wordmark); }
  [[nodiscard]] static QString subtitle() { return text(Wording::subtitle); }
  [[nodiscard]] static QString difficulty() { return text(Wording::difficulty); }
  [[nodiscard]] static QString actual() { return text(Wording::actual); }
  [[nodiscard]] static QString switchHint() { return text(Wording::switchHint); }
  [[nodiscard]] static QString keyHint() { return text(Wording::keyHint); }
  [[nodiscard]] static QString streak() { return text(Wording::streak); }
  [[nodiscard]] static QString today() { return text(Wording::today); }
  [[nodiscard]] static QString accuracy() { return text(Wording::accuracy); }
  [[nodiscard]] static QString mapTitle() { return text(Wording::mapTitle); }
  [[nodiscard]] static QString curveHint() { return text(Wording::curveHint); }
  [[nodiscard]] static QString drills() { return text(Wording::drills); }
  [[nodiscard]] static QString versions() { return text(Wording::versions); }
  [[nodiscard]] static QString materials() { return text(Wording::materials); }
  [[nodiscard]] static QString map() { return text(Wording::map); }

  [[nodiscard]] Q_INVOKABLE static QString playName(const QString& slotTitle) {
    return text(Wording::playName(slotTitle.toStdString()));
  }
  [[nodiscard]] Q_INVOKABLE static QString spokenDifficulty(const QString& value) {
    return text(Wording::spokenDifficulty(value.toStdString()));
  }
  // `drill` is an index into Drill::allCases.
  [[nodiscard]] Q_INVOKABLE static QString answerName(int drill) {
    return text(Wording::answerName(Drill::allCases.at(static_cast<std::size_t>(drill))));
  }
  [[nodiscard]] Q_INVOKABLE static QString spokenAnswer(const QString& answer,
                                                        const QString& truth) {
    return text(Wording::spokenAnswer(answer.toStdString(), truth.toStdString()));
  }
  [[nodiscard]] Q_INVOKABLE static QString slotName(int index) {
    return text(Wording::slotName(index));
  }
  // `flipped` is -1 until the flipped slot is known.
  [[nodiscard]] Q_INVOKABLE static QString slotCaption(int index, int flipped) {
    return text(Wording::slotCaption(index, flipped < 0 ? std::nullopt
                                                        : std::optional<std::int64_t>(flipped)));
  }
  [[nodiscard]] Q_INVOKABLE static QStringList primaryTexts(bool ends) {
    QStringList texts;
    for (const std::string_view each : Wording::primaryTexts(ends))
      texts.append(text(each));
    return texts;
  }
  [[nodiscard]] Q_INVOKABLE static QString spokenProgress(const QString& progress) {
    return text(Wording::spokenProgress(progress.toStdString()));
  }
};

} // namespace velto
