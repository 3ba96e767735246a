// The configuration is read at every start and written at every end; both
// must stay far below anything a user could notice, even with the full list
// of installations.

#include "core/base/qmugenmodel.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include "benchsupport.h"

namespace {

QMugenModel *fullModel()
{
    auto *model = new QMugenModel;
    for (int i = 0; i < QMugenModel::MaxInstallations; ++i)
        model->add(QStringLiteral("M.U.G.E.N. %1").arg(i), QStringLiteral("C:/mugen%1/mugen.exe").arg(i),
                   QStringLiteral("-p1.ai 1 %0 kfm"), QString());
    for (int i = 0; i < 200; ++i)
        model->config[QStringLiteral("unknown_key_%1").arg(i)] = QStringLiteral("value %1").arg(i);
    return model;
}

void BM_ConfigurationSave(benchmark::State &state)
{
    QTemporaryDir dir;
    QMugenModel *model = fullModel();
    const QString path = dir.filePath(QStringLiteral("config.xml"));
    for (auto _ : state)
        benchmark::DoNotOptimize(model->save(path));
    delete model;
}
BENCHMARK(BM_ConfigurationSave)->Unit(benchmark::kMicrosecond);

void BM_ConfigurationLoad(benchmark::State &state)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("config.xml"));
    QMugenModel *source = fullModel();
    source->save(path);
    delete source;
    for (auto _ : state) {
        QMugenModel model;
        benchmark::DoNotOptimize(model.load(path));
    }
}
BENCHMARK(BM_ConfigurationLoad)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return BenchSupport::runBenchmarks(argc, argv);
}
