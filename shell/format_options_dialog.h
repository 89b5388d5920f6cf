// "Format Code Options": the twelve layout settings of Format Code.
#pragma once

#include <QDialog>
#include <vector>

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
    std::vector<QSpinBox*> fields_;  // in the order of FormatCodeOptionKeys()
};

}  // namespace mb
