#pragma once

#include "paramwrap.h"
#include "plugininterface.h"
#include "tool.h"

#include <QList>
#include <QPainter>
#include <QVariantMap>
#include <QtPlugin>

/// Four pairs of limits that the host reads from a processor.
struct LimitPairs
{
    struct Pair
    {
        qint32 minimum;
        qint32 maximum;
    };
    Pair pair[4];
};

/// An inspection step of the host: slots 9 to 37 of the virtual table.
///
/// The host calls all operations of one instance from one thread at a time. The operations named
/// reservedNN belong to other kinds of processor; they keep their place so that the table keeps its
/// order, take no arguments and answer with an empty value.
class ProcessorInterface : public PluginInterface
{
public:
    /// The instance's own parameter list, in the order in which the host shows and persists it.
    /// List and objects belong to the processor and live as long as it does.
    virtual QList<ParamWrap*>* params() = 0;
    /// Says in `out` which model is selected. Returns true.
    virtual bool reloadModel(QString& out) = 0;
    virtual void* reserved11() = 0;
    /// The defect types that this processor reports, as shown to the operator.
    virtual QString defectTypeNames() = 0;
    /// Prepares the folders of the picture archive for `tool`, which must be a Tool, and writes no picture. Hands the
    /// detector, which instances with the same model share, its confidence threshold.
    virtual void archivePictures(ToolInterface* tool) = 0;
    virtual void reserved14() = 0;

    /// Inspects item `index` of `tool`; index 0 starts a new cycle. The outcome is asked for with
    /// isResultOk(), resultRecord() and drawResult(). Never throws.
    virtual void process(Tool* tool, int index) = 0;
    /// A new instance that serves `hostTool`, with this one's settings if `copyParams`.
    /// The caller owns it.
    virtual ProcessorInterface* clone(Tool* hostTool, bool copyParams) = 0;
    virtual quint32 capabilityFlags() = 0;
    /// The verdict of the item at position `index` among those processed in the cycle;
    /// -1 asks for all of them together.
    virtual bool isResultOk(int index) = 0;
    /// What was found in item `index`, with the keys and value types of resultTemplate(). "charCount" and "resString"
    /// are those of the item processed last, whatever `index` is.
    virtual QVariantMap resultRecord(int index) = 0;
    virtual QVariantMap resultTemplate() = 0;
    virtual QString reserved21() = 0;
    virtual QString reserved22() = 0;
    virtual bool reserved23() = 0;
    virtual bool reserved24() = 0;
    virtual void reserved25() = 0;
    virtual void reserved26() = 0;
    virtual void reserved27() = 0;
    virtual QString reserved28() = 0;
    virtual bool reserved29() = 0;
    virtual void* reserved30() = 0;
    virtual bool reserved31() = 0;
    virtual bool reserved32() = 0;
    virtual void reserved33() = 0;

    /// Draws the result of item `index` over the picture, in picture coordinates. Font, pen and
    /// brush of `painter` are left changed.
    virtual void drawResult(QPainter* painter, int index) = 0;
    virtual QString reserved35() = 0;
    virtual void reserved36() = 0;
    virtual LimitPairs limitPairs() = 0;
};

Q_DECLARE_INTERFACE(ProcessorInterface, "com.qrn.brightfield.processorinterface")
