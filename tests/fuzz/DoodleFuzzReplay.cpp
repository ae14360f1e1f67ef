// Replays files (or every file of the folders) given as arguments through the
// fuzz harness, so that the seed corpus runs in the normal test build.
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        const QFileInfo argument(QString::fromLocal8Bit(argv[i]));
        const QFileInfoList files = argument.isDir()
                                        ? QDir(argument.filePath()).entryInfoList(QDir::Files)
                                        : QFileInfoList{argument};
        for (const QFileInfo &file : files) {
            QFile in(file.filePath());
            if (!in.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.filePath()));
                return 1;
            }
            const QByteArray bytes = in.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                                   std::size_t(bytes.size()));
            ++count;
        }
    }
    std::printf("replayed %d inputs\n", count);
    return count > 0 ? 0 : 1;
}
