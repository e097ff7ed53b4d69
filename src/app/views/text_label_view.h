// The view of a text label's properties: the text, its font and its anchor on the
// map.
#pragma once

#include <QDialog>
#include <functional>
#include <string>

#include "elements/text_label_dialog.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tarno {

class TextLabelView : public QDialog {
 public:
  TextLabelView(TextLabelProperties& model, UserInterface& ui,
                std::function<std::string()> projectFile, QWidget* parent = nullptr);

  QLineEdit* tbText() const { return text_; }
  QLineEdit* tbFontName() const { return fontName_; }
  QLineEdit* tbFontSize() const { return fontSize_; }
  QCheckBox* chkBold() const { return bold_; }
  QCheckBox* chkItalic() const { return italic_; }
  QLineEdit* tbX() const { return x_; }
  QLineEdit* tbY() const { return y_; }
  QLabel* xUnit() const { return xUnit_; }
  QPushButton* okButton() const { return ok_; }
  QPushButton* cancelButton() const { return cancel_; }
  QLineEdit* field(TextLabelProperties::Field which) const;

  void reject() override;

 private:
  void ToModel();
  void PressOK();

  TextLabelProperties& model_;
  UserInterface& ui_;
  std::function<std::string()> projectFile_;
  QLineEdit *text_, *fontName_, *fontSize_, *x_, *y_;
  QCheckBox *bold_, *italic_;
  QLabel *xUnit_, *yUnit_;
  QPushButton *ok_, *cancel_;
};

}  // namespace tarno
