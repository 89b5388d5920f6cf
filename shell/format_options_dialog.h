// "Format Code Options": the twelve layout settings of Format Code.
#pragma once

#include <QDialog>
#include <array>

#include "assembler/format_code.h"

class QSpinBox;

namespace mb {

class FormatOptionsDialog : public QDialog {
    Q_OBJECT
  public:
    FormatOptionsDialog(const FormatCodeOptions& options, QWidget* parent);
    FormatCodeOptions Options() const;
    void SetOptions(const FormatCodeOptions& options);

  private:
    static constexpr int kCount = 12;
    std::array<QSpinBox*, kCount> fields_{};
};

}  // namespace mb
