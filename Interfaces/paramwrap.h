#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

/// One field of the host's settings panel.
///
/// A parameter does not hold its value: it points at members of the processor that made it, so the
/// host's editors and the processor see the same storage. The processor owns its parameters and
/// outlives them; a parameter owns only its texts. The host tells the kinds apart by typeName().
class ParamWrap
{
public:
    ParamWrap(QString name, QString tip, bool hostFlag, bool isRunningShow, quint32 category);
    virtual ~ParamWrap();

    ParamWrap(const ParamWrap&) = delete;
    ParamWrap& operator=(const ParamWrap&) = delete;

    /// The kind: the class's own name; empty for ParamWrap itself.
    virtual QString typeName();
    /// Read by the host only. False for every kind.
    virtual bool isSpecial();
    /// Restores the values from `object`. A missing key changes nothing; a value of another JSON type
    /// converts by Qt's rules (to false, 0 or an empty text).
    virtual void readJson(const QJsonObject& object);
    /// Adds the values to `object`, replacing keys of the same names.
    virtual void writeJson(QJsonObject& object);

    QString name; ///< the label
    QString tip; ///< the tool-tip; may hold line breaks "\r"
    bool hostFlag; ///< a display flag, read by the host only
    quint32 category; ///< for the host: 0 heading, 1 choice, 2 run-time value, 3 edited value
    bool isRunningShow; ///< whether the host shows the field while inspecting; persisted
    bool auxFlag = false; ///< for the host; a processor does not change it
};

/// A heading.
class SeparateParam : public ParamWrap
{
public:
    SeparateParam(QString name, QString tip, bool hostFlag, bool isRunningShow);
    QString typeName() override;
};

/// A text or number field.
class LineEditParam : public ParamWrap
{
public:
    /// What `value` points at.
    enum ValueType : quint32 {
        BoolValue = 0,
        IntValue = 1, ///< 32 bits
        FloatValue = 2,
        DoubleValue = 3,
        StringValue = 4, ///< QString
    };

    /// `rangeMin`, `rangeMax` and `rangeStep` set up the host's editor; null: no range.
    LineEditParam(QString name, QString tip, bool hostFlag, bool isRunningShow, quint32 category, void* value,
        quint32 valueType, int* rangeMin, int* rangeMax, int* rangeStep);
    QString typeName() override;
    void readJson(const QJsonObject& object) override;
    void writeJson(QJsonObject& object) override;

    quint32 valueType; ///< a ValueType; any other number reads and writes no value
    int* rangeMin;
    int* rangeMax;
    int* rangeStep;
    void* value;
};

/// A number field with a lower and an upper limit of the same type.
class LimitLineEditParam : public LineEditParam
{
public:
    LimitLineEditParam(QString name, QString tip, bool hostFlag, bool isRunningShow, void* value, void* lowThresh,
        void* highThresh, quint32 valueType, int* rangeMin, int* rangeMax, int* rangeStep);
    QString typeName() override;
    /// Settings from before the limits existed hold the match score's lower limit as its value: for a
    /// parameter named "匹配分数" without limits in `object`, the value becomes the lower limit.
    void readJson(const QJsonObject& object) override;
    void writeJson(QJsonObject& object) override;

    void* lowThresh;
    void* highThresh;
    void* compensate = nullptr; ///< an optional third number of the same type
};

/// A group of choices, of which the host sets one.
class RadioBoxParam : public ParamWrap
{
public:
    /// `values`, `names` and `tips` are arrays of `count`.
    RadioBoxParam(QString name, QString tip, bool hostFlag, bool isRunningShow, quint32 category, bool* values,
        int count, QString* names, QString* tips);
    QString typeName() override;
    /// An array shorter than the group clears the choices that it lacks.
    void readJson(const QJsonObject& object) override;
    void writeJson(QJsonObject& object) override;

    qint32 count;
    QString* names;
    QString* tips;
    bool* values;
};

/// A group of choices that are independent of one another.
class CheckBoxParam : public RadioBoxParam
{
public:
    using RadioBoxParam::RadioBoxParam;
    QString typeName() override;
};

/// A drop-down list whose choice is kept by its text, so that it survives a change of the list.
class ComboBoxParam_ByValue : public ParamWrap
{
public:
    ComboBoxParam_ByValue(QString name, QString tip, bool hostFlag, bool isRunningShow, quint32 category,
        QStringList* itemTexts, QStringList* itemValues, QString* selectedText);
    QString typeName() override;
    /// Whether the list holds the text is not looked at; anything but a text is ignored.
    void readJson(const QJsonObject& object) override;
    void writeJson(QJsonObject& object) override;

    QStringList* itemTexts;
    QStringList* itemValues;
    QString* selectedText;
};
