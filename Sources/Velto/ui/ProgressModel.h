// The listener's progress, for the side panel.
#pragma once

#include "Progress.h"
#include "Session.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>

namespace velto {

// Adapts the session's practice record for QML. Main thread only.
class ProgressModel : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("created by the application")

  Q_PROPERTY(QString streak READ streak NOTIFY recordChanged FINAL)
  Q_PROPERTY(QString today READ today NOTIFY recordChanged FINAL)
  Q_PROPERTY(QString accuracy READ accuracy NOTIFY drillRecordChanged FINAL)
  // Heights in points, and weaknesses from 0 to 1 (-1: no answers), one for each band.
  Q_PROPERTY(QList<double> barHeights READ barHeights NOTIFY recordChanged FINAL)
  Q_PROPERTY(QList<double> weaknesses READ weaknesses NOTIFY recordChanged FINAL)
  Q_PROPERTY(double tallestBar READ tallestBar CONSTANT FINAL)            // points
  Q_PROPERTY(int weakestBand READ weakestBand NOTIFY recordChanged FINAL) // -1: none
  Q_PROPERTY(QString weakestText READ weakestText NOTIFY recordChanged FINAL)
  // The map and the curve for screen readers.
  Q_PROPERTY(QString mapDescription READ mapDescription NOTIFY recordChanged FINAL)
  Q_PROPERTY(QString curveDescription READ curveDescription NOTIFY drillRecordChanged FINAL)
  Q_PROPERTY(QStringList bandLabels READ bandLabels CONSTANT FINAL)
  Q_PROPERTY(QString curveTitle READ curveTitle NOTIFY drillChanged FINAL)
  Q_PROPERTY(
      QList<double> curve READ curve NOTIFY drillRecordChanged FINAL) // difficulties, oldest first

public:
  // `session` outlives the model.
  explicit ProgressModel(Session& session, QObject* parent = nullptr);
  ~ProgressModel() override;

  [[nodiscard]] QString streak() const;
  [[nodiscard]] QString today() const;
  [[nodiscard]] QString accuracy() const;
  [[nodiscard]] const QList<double>& barHeights() const { return barHeights_; }
  [[nodiscard]] const QList<double>& weaknesses() const { return weaknesses_; }
  [[nodiscard]] static double tallestBar() { return Progress::tallestBar; }
  [[nodiscard]] int weakestBand() const;
  [[nodiscard]] QString weakestText() const;
  [[nodiscard]] QString mapDescription() const;
  [[nodiscard]] QString curveDescription() const;
  [[nodiscard]] static QStringList bandLabels();
  [[nodiscard]] QString curveTitle() const;
  [[nodiscard]] QList<double> curve() const;

Q_SIGNALS:
  void drillChanged();
  void recordChanged();
  // The current drill's part of the record has changed. Sent with either of the others.
  void drillRecordChanged();

private:
  void announce(Session::Field field);
  void computeBars();
  [[nodiscard]] const Profile& profile() const { return session_.profile(); }

  Session& session_;
  QList<double> barHeights_; // computed once per recorded answer
  QList<double> weaknesses_;
  Publisher<Session::Field>::Token subscription_;
};

} // namespace velto
