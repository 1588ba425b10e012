#pragma once

#include <QCheckBox>

namespace quillbay::cloud {

/// A checkbox whose box is seen in every style: some draw its outline hardly darker than the
/// ground. Main thread.
class OutlinedCheckBox : public QCheckBox {
 protected:
  void paintEvent(QPaintEvent* event) override;
};

}  // namespace quillbay::cloud
