#pragma once

#include <QString>

class QWidget;

namespace quillbay::desktop {

/// Tells the user, who is busy elsewhere: through the desktop's notification service, and by
/// marking the window in the task bar. Does nothing while `window` is in front. `body` is plain
/// text. Main thread only.
void notify(QWidget& window, const QString& summary, const QString& body);

}  // namespace quillbay::desktop
