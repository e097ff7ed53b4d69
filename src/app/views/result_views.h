// The views of the result dialogs (solver/result_views.h): one read-only form for
// the information dialogs of an element (LSInfo, INInfo, Lakeinfo) and the results
// viewer with one read-only grid per result table and its copy to the clipboard.
#pragma once

#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>
#include <vector>

#include "solver/result_views.h"

namespace tarno {

class ResultInfoView : public QDialog {
 public:
  ResultInfoView(const ResultInfo& model, QWidget* parent = nullptr);
  // The value fields in the order of the model's lines.
  const std::vector<QLineEdit*>& values() const { return values_; }
  QPushButton* okButton() const { return ok_; }

 private:
  std::vector<QLineEdit*> values_;
  QPushButton* ok_;
};

// The clipboard of the desktop for the viewer's copy.
class QtClipboard : public ClipboardPort {
 public:
  void SetText(const std::string& text) override;
};

class ResultViewerView : public QDialog {
 public:
  ResultViewerView(ResultViewer& model, ClipboardPort& clipboard, QWidget* parent = nullptr);
  QTabWidget* tabs() const { return tabs_; }
  QTableWidget* grid(int tab) const { return grids_[static_cast<size_t>(tab)]; }
  QPushButton* copyButton() const { return copy_; }
  QPushButton* closeButton() const { return close_; }

 private:
  ResultViewer& model_;
  ClipboardPort& clipboard_;
  QTabWidget* tabs_;
  std::vector<QTableWidget*> grids_;
  QPushButton *copy_, *close_;
};

}  // namespace tarno
