// The listener's progress as the side panel sees it.
#pragma once

#include "Progress.h"
#include "Session.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Adapts the session's practice record for QML; holds no state of its own. Main thread only.
class ProgressModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("the application makes it")

  Q_PROPERTY(QString streak READ streak NOTIFY changed FINAL)
  Q_PROPERTY(QString today READ today NOTIFY changed FINAL)
  Q_PROPERTY(QString accuracy READ accuracy NOTIFY changed FINAL)
  // Heights in points, and weaknesses from 0 to 1 (-1: no answers), one for each band.
  Q_PROPERTY(QList<double> barHeights READ barHeights NOTIFY changed FINAL)
  Q_PROPERTY(QList<double> weaknesses READ weaknesses NOTIFY changed FINAL)
  Q_PROPERTY(int weakestBand READ weakestBand NOTIFY changed FINAL) // -1: none
  Q_PROPERTY(QString weakestText READ weakestText NOTIFY changed FINAL)
  // The map and the curve in words.
  Q_PROPERTY(QString mapDescription READ mapDescription NOTIFY changed FINAL)
  Q_PROPERTY(QString curveDescription READ curveDescription NOTIFY changed FINAL)
  Q_PROPERTY(QStringList bandLabels READ bandLabels CONSTANT FINAL)
  Q_PROPERTY(QString curveTitle READ curveTitle NOTIFY changed FINAL)
  Q_PROPERTY(QList<double> curve READ curve NOTIFY changed FINAL) // difficulties, oldest first

public:
  // `session` outlives the model.
  explicit ProgressModel(Session& session, QObject* parent = nullptr);
  ~ProgressModel() override;

  [[nodiscard]] QString streak() const;
  [[nodiscard]] QString today() const;
  [[nodiscard]] QString accuracy() const;
  [[nodiscard]] QList<double> barHeights() const;
  [[nodiscard]] QList<double> weaknesses() const;
  [[nodiscard]] int weakestBand() const;
  [[nodiscard]] QString weakestText() const;
  [[nodiscard]] QString mapDescription() const;
  [[nodiscard]] QString curveDescription() const;
  [[nodiscard]] static QStringList bandLabels();
  [[nodiscard]] QString curveTitle() const;
  [[nodiscard]] QList<double> curve() const;

Q_SIGNALS:
  void changed();

private:
  [[nodiscard]] std::vector<Progress::Bar> bars() const;

  Session& session_;
  Publisher::Token subscription_;
};

} // namespace velto
