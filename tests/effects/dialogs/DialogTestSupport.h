#pragma once
// Dialogs under test: one widget application for the process on Qt's offscreen platform,
// a picture of four coloured quadrants, parameter lists in text form, clicks on a modal
// dialog that another call runs, and the screenshots the test run keeps.
#include "effects/dialogs/DialogRequest.h"
#include "effects/dialogs/PropertiesDialog.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QTimer>

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace qx::test {

inline QApplication& TestApplication()
{
    static int argc = 1;
    static char name[] = "test_dialogs";
    static char* argv[] = {name, nullptr};
    static QApplication* application = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        auto* app = new QApplication(argc, argv);  // lives as long as the process
        QApplication::setStyle("Fusion");
        return app;
    }();
    return *application;
}

/// Red top left, green top right, blue bottom left, yellow bottom right; B, G, R, A samples.
inline std::vector<uint32_t> QuadrantPicture(int width, int height)
{
    std::vector<uint32_t> samples(size_t(width) * size_t(height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            samples[size_t(y * width + x)] = y < height / 2 ? (x < width / 2 ? 0xFFE02020u : 0xFF20C020u)
                                                            : (x < width / 2 ? 0xFF2040E0u : 0xFFE0E020u);
    return samples;
}

/// A list of 16 values from its text form ("1;2;3;").
inline std::array<LONG, kMaxParams> List(const std::string& text)
{
    std::array<LONG, kMaxParams> values{};
    size_t slot = 0, start = 0;
    for (size_t semicolon; slot < values.size() && (semicolon = text.find(';', start)) != std::string::npos;
         start = semicolon + 1)
        values[slot++] = std::stol(text.substr(start, semicolon - start));
    return values;
}

/// The first `count` values in text form.
inline std::string Text(const std::array<LONG, kMaxParams>& values, size_t count)
{
    std::string text;
    for (size_t i = 0; i < count; ++i) text += std::to_string(values[i]) + ";";
    return text;
}

/// What a dialog gives back for `count` values after OK, over a list of zeros.
inline std::string Stored(const dialogs::PropertiesDialog& dialog, size_t count)
{
    std::array<LONG, kMaxParams> values{};
    dialog.store(values);
    return Text(values, count);
}

/// Saves a picture of the dialog as it shows, for a person to look at.
inline void SaveScreenshot(QWidget& dialog, const QString& name)
{
    QDir().mkpath(QX_SCREENSHOT_DIR);
    dialog.adjustSize();
    dialog.grab().save(QString(QX_SCREENSHOT_DIR "/%1.png").arg(name));
}

/// Once a modal dialog shows, calls `withDialog` on it and then presses its button
/// `button` ("OK" or "Annuler"). For calls that run the dialog themselves. A call that
/// shows no dialog within a minute leaves nothing behind for a later test to answer.
inline void AnswerNextDialog(const QString& button, std::function<void(QWidget&)> withDialog = {})
{
    TestApplication();  // the timer needs the application's thread
    auto* poll = new QTimer;
    poll->setInterval(10);
    auto since = std::make_shared<QElapsedTimer>();
    since->start();
    QObject::connect(poll, &QTimer::timeout, [poll, since, button, withDialog] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (!dialog && since->elapsed() < 60'000) return;
        poll->stop();
        poll->deleteLater();
        if (!dialog) return;
        if (withDialog) withDialog(*dialog);
        for (auto* candidate : dialog->findChildren<QAbstractButton*>())
            if (candidate->text() == button) candidate->click();
    });
    poll->start();
}

}  // namespace qx::test
