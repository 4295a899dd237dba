#pragma once
// Stand-in for an analysis form whose own unit is not written yet: it exists
// with its name, caption and bold title, so the program can create and show it.

#include <QWidget>

class TPendingReportForm : public QWidget {
    Q_OBJECT
public:
    TPendingReportForm(const QString &name, const QString &title, QWidget *parent = nullptr);
};
