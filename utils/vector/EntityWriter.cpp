// CEntityWriter over the atomic whole-file writer.
#include "utils/vector/EntityWriter.h"

CEntityWriter::CEntityWriter(const wchar_t* path) : file_(path), path_(path ? path : L"") {}

CEntityWriter::~CEntityWriter() { close(); }

bool CEntityWriter::open() { return file_.open(); }

bool CEntityWriter::write(const void* data, int bytes) {
    if (bytes < 0) return false;
    return file_.write(data, static_cast<std::size_t>(bytes));
}

bool CEntityWriter::writeEntityHeader(int id, int size) {
    unsigned char header[VectorFormat::kEntityHeaderBytes];
    VectorFormat::writeU32(header, static_cast<std::uint32_t>(id));
    VectorFormat::writeU32(header + 4, static_cast<std::uint32_t>(size));
    return file_.write(header, sizeof header);
}

bool CEntityWriter::writeEntity(VectorFormat::Entity<char>* entity, unsigned int offset) {
    if (entity == nullptr || !file_.seek(offset)) return false;
    return file_.write(entity->bytes(), std::size_t{VectorFormat::kEntityHeaderBytes} + entity->getSize());
}

bool CEntityWriter::close() {
    if (file_.isOpen()) committed_ = file_.commit();
    return committed_;
}
