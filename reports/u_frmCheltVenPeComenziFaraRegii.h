#pragma once
// Stand-in for the form until its own unit is written: it exists with its
// caption so the program can create and show it.

#include <QWidget>

class TfrmCheltVenPeComenziFaraRegii : public QWidget {
    Q_OBJECT
public:
    explicit TfrmCheltVenPeComenziFaraRegii(QWidget *parent = nullptr);
};

extern TfrmCheltVenPeComenziFaraRegii *frmCheltVenPeComenziFaraRegii;
