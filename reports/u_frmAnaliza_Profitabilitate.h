#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QWidget>

class TfrmAnaliza_Profitabilitate : public QWidget {
    Q_OBJECT
public:
    explicit TfrmAnaliza_Profitabilitate(QWidget *parent = nullptr);
};

extern TfrmAnaliza_Profitabilitate *frmAnaliza_Profitabilitate;
