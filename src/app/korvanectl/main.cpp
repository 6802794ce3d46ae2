#include <QCoreApplication>
#include <QTextStream>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QTextStream(stderr) << "usage: korvanectl info [--json] [--simulate PATH]...\n";
    return 2;
}
