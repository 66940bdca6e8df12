#include "operationdetails.h"

#include <QStringList>

#include <algorithm>

namespace scribo::tool {

namespace {

using format::OperationKind;

template <class List>
QString listText(const List* list)
{
    QStringList parts;
    if (list) {
        for (auto value : *list) {
            parts << QString::number(value);
        }
    }
    return parts.join(QLatin1Char(' '));
}

/// "what 1 2", or nothing for a list that is empty or holds only `plain`.
template <class List>
void addUnless(QStringList* details, const char* what, const List* list, int plain)
{
    const bool all = !list || std::all_of(list->begin(), list->end(), [plain](auto value) { return value == plain; });
    if (!all) {
        *details << QStringLiteral("%1 %2").arg(QLatin1String(what), listText(list));
    }
}

void addActivation(QStringList* details, const format::Activation* activation)
{
    if (activation && activation->kind() != format::ActivationKind::None) {
        *details << QString::fromLatin1(format::EnumNameActivationKind(activation->kind()));
        if (activation->scale() != 1 || activation->shift() != 0) {
            *details << QStringLiteral("times %1 plus %2").arg(activation->scale()).arg(activation->shift());
        }
    }
}

QStringList convolutionDetails(const format::Convolution& convolution)
{
    QStringList details;
    addUnless(&details, "strides", convolution.strides(), 1);
    addUnless(&details, "pads", convolution.pads(), 0);
    addUnless(&details, "dilations", convolution.dilations(), 1);
    if (convolution.groups() != 1) {
        details << QStringLiteral("groups %1").arg(convolution.groups());
    }
    addActivation(&details, convolution.activation());
    return details;
}

QStringList poolingDetails(const format::Pooling& pooling)
{
    QStringList details;
    details << QString::fromLatin1(format::EnumNamePoolingKind(pooling.kind()))
            << QStringLiteral("kernel %1").arg(listText(pooling.kernel()));
    addUnless(&details, "strides", pooling.strides(), 1);
    addUnless(&details, "pads", pooling.pads(), 0);
    if (pooling.ceil_mode()) {
        details << QStringLiteral("ceil");
    }
    return details;
}

QStringList recurrentDetails(const format::Recurrent& layer)
{
    return {QString::fromLatin1(format::EnumNameCellKind(layer.cell())),
        QString::fromLatin1(format::EnumNameDirection(layer.direction())),
        QStringLiteral("hidden %1").arg(layer.hidden_size())};
}

QStringList fullyConnectedDetails(const format::FullyConnected& layer)
{
    QStringList details;
    addActivation(&details, layer.activation());
    return details;
}

/// The operations that one word or list describes.
QString shortDetails(const format::Operation& operation)
{
    switch (operation.kind_type()) {
    case OperationKind::Activation:
        return QString::fromLatin1(format::EnumNameActivationKind(operation.kind_as_Activation()->kind()));
    case OperationKind::Binary:
        return QString::fromLatin1(format::EnumNameBinaryKind(operation.kind_as_Binary()->kind()));
    case OperationKind::Unary:
        return QString::fromLatin1(format::EnumNameUnaryKind(operation.kind_as_Unary()->kind()));
    case OperationKind::Reduction:
        return QStringLiteral("%1 over %2")
            .arg(QString::fromLatin1(format::EnumNameReductionKind(operation.kind_as_Reduction()->kind())),
                listText(operation.kind_as_Reduction()->axes()));
    case OperationKind::Transpose:
        return listText(operation.kind_as_Transpose()->permutation());
    case OperationKind::Squeeze:
        return QStringLiteral("axes %1").arg(listText(operation.kind_as_Squeeze()->axes()));
    case OperationKind::Unsqueeze:
        return QStringLiteral("axes %1").arg(listText(operation.kind_as_Unsqueeze()->axes()));
    case OperationKind::Concat:
        return QStringLiteral("axis %1").arg(operation.kind_as_Concat()->axis());
    case OperationKind::Gather:
        return QStringLiteral("axis %1").arg(operation.kind_as_Gather()->axis());
    case OperationKind::Split:
        return QStringLiteral("axis %1 into %2")
            .arg(QString::number(operation.kind_as_Split()->axis()), listText(operation.kind_as_Split()->sizes()));
    case OperationKind::Softmax:
        return QStringLiteral("axis %1%2")
            .arg(QString::number(operation.kind_as_Softmax()->axis()),
                QLatin1String(operation.kind_as_Softmax()->logarithm() ? ", logarithm" : ""));
    default:
        return {};
    }
}

} // namespace

QString operationDetails(const format::Operation& operation)
{
    const QString separator = QStringLiteral(", ");
    switch (operation.kind_type()) {
    case OperationKind::Convolution:
        return convolutionDetails(*operation.kind_as_Convolution()).join(separator);
    case OperationKind::Pooling:
        return poolingDetails(*operation.kind_as_Pooling()).join(separator);
    case OperationKind::Recurrent:
        return recurrentDetails(*operation.kind_as_Recurrent()).join(separator);
    case OperationKind::FullyConnected:
        return fullyConnectedDetails(*operation.kind_as_FullyConnected()).join(separator);
    default:
        return shortDetails(operation);
    }
}

} // namespace scribo::tool
