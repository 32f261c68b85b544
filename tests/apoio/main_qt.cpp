// Test entry point: a QApplication on the offscreen platform, so widget tests drive real widgets.

#include "ui/TratadorErros.h"

#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    orb::Aplicacao app(argc, argv);  // the program's own, so errors from event handlers reach its handler
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
