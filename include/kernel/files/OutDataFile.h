#pragma once
// Writer of the text dialect read by InDataFile. The text goes to a temporary
// beside the file and takes the file's name at close(): a writer destroyed
// without close(), or whose stream failed, leaves the old file as it was.

#include "kernel/common/StagedFile.h"
#include "kernel/files/BaseDataFile.h"

#include <fstream>
#include <string>

class OutDataFile : public std::ofstream, public BaseDataFile
{
public:
    // Opens the file; a failure is seen through is_open().
    explicit OutDataFile(const std::string& path);
    ~OutDataFile() override;

    // Ends the writing and puts the file in place; a failure sets failbit.
    void close();

    void comment(const std::string& text);
    void separator();
    void section(const std::string& name);
    // The text and a blank, no line end.
    void word(const std::string& text);

    void key_value(const std::string& key, const std::string& value);
    void key_value(const std::string& key, int value);
    void key_value(const std::string& key, unsigned int value);
    // Precision -1 keeps the stream's notation; otherwise fixed with that many
    // decimals, the stream's format being restored afterwards.
    void key_value(const std::string& key, double value, int precision = -1);

private:
    // The key and its separator (a blank when there is none).
    void key_prefix(const std::string& key);

    StagedFile _staged;
};
