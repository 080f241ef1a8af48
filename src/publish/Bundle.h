#pragma once

#include "publish/SourceFolder.h"

#include <QByteArray>
#include <QString>

#include <expected>
#include <vector>

// What is made of the files to be published. The same files give the same bytes, whenever and wherever it is done with
// the same versions of the compressing libraries.
namespace pelloran {

// SHA-256 over the lines that `sha256sum` prints for the files in their order: DIGEST, two spaces, PATH. Depends on
// names and contents alone.
QString contentHash(const std::vector<SourceFile>& files);

// A gzipped tar of plain files, of nobody and of no time. Fails with what the archiving library says.
std::expected<QByteArray, QString> gzippedTar(const std::vector<SourceFile>& files);

} // namespace pelloran
