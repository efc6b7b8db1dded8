// The smallest program with KDE's share menu: shares files by the entry that is named and says what
// the menu would show of it, a line each: "percent N", "error N TEXT", "output JSON".
//
// Usage: purpose_host ENTRY FILE...

#include <KJob>
#include <Purpose/AlternativesModel>
#include <Purpose/Configuration>
#include <Purpose/Job>
#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QUrl>
#include <iostream>
#include <memory>

namespace {

QJsonObject selection(const QStringList& paths) {
  QJsonArray urls;
  for (const QString& path : paths) {
    urls.append(QUrl::fromLocalFile(path).toString());  // as file managers name them
  }
  return {{"urls", urls}, {"mimeType", "application/octet-stream"}};
}

int row_of(const Purpose::AlternativesModel& menu, const QString& entry) {
  for (int row = 0; row < menu.rowCount(); ++row) {
    if (menu.data(menu.index(row), Purpose::AlternativesModel::PluginIdRole) == entry) {
      return row;
    }
  }
  return -1;
}

void tell_of(Purpose::Job& job) {
  QObject::connect(&job, &KJob::percentChanged, [](KJob*, unsigned long percent) {
    std::cout << "percent " << percent << '\n';
  });
  QObject::connect(&job, &KJob::result, [&job] {
    if (job.error() != 0) {
      std::cout << "error " << job.error() << ' ' << qPrintable(job.errorString()) << '\n';
    }
    const auto output = QJsonDocument(job.output()).toJson(QJsonDocument::Compact);
    std::cout << "output " << output.constData() << '\n';
    QCoreApplication::exit(job.error() != 0 ? 1 : 0);
  });
}

}  // namespace

int main(int argc, char** argv) {
  const QCoreApplication application(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  Purpose::AlternativesModel menu;
  menu.setInputData(selection(arguments.mid(2)));
  menu.setPluginType("Export");
  const int row = row_of(menu, arguments.value(1));
  if (row < 0) {
    std::cout << "the menu has no entry " << qPrintable(arguments.value(1)) << '\n';
    return 2;
  }
  const std::unique_ptr<Purpose::Configuration> entry(menu.configureJob(row));
  Purpose::Job* const job = entry->createJob();  // deletes itself
  tell_of(*job);
  job->start();
  return QCoreApplication::exec();
}
