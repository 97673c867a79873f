// Prints the device pixel ratio that Qt gives a bare window here, once it is on the screen.
#include <QGuiApplication>
#include <QRasterWindow>
#include <QTimer>

#include <cstdio>

namespace {

class Bare : public QRasterWindow {
protected:
  // Painted again when the compositor tells the window its scale, which it does after the first
  // frame.
  void paintEvent(QPaintEvent*) override { settled_.start(); }

public:
  Bare() {
    resize(200, 100);
    settled_.setSingleShot(true);
    settled_.setInterval(300);
    QObject::connect(&settled_, &QTimer::timeout, [this] {
      std::printf("%.17g\n", devicePixelRatio());
      QGuiApplication::exit(0);
    });
  }

private:
  QTimer settled_;
};

} // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  Bare window;
  window.show();
  return QGuiApplication::exec();
}
