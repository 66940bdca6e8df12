#include "packagemaker.h"

#include "resulttext.h"
#include "scorecheck.h"
#include "text.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace scribo::tool {

namespace {

using Extents = std::vector<std::int64_t>;

/// The layout of scores of these extents, told by the batch of 1 and the steps, which follow from the
/// width; empty when it is not clear.
std::string layoutOf(const Extents& extents)
{
    const auto steps = std::find(extents.begin(), extents.end(), -1);
    const auto batch = std::find(extents.begin(), extents.end(), 1);
    if (extents.size() != 3 || steps == extents.end() || batch == extents.end()) {
        return {};
    }
    std::string layout = "kkk";
    layout[static_cast<std::size_t>(steps - extents.begin())] = 't';
    layout[static_cast<std::size_t>(batch - extents.begin())] = 'n';
    return layout;
}

/// Whether the scores of each step add up to 1, as those of a soft-max do.
bool givesProbabilities(const std::vector<std::uint8_t>& engine, int width)
{
    return checkScores(engine.data(), engine.size(), width).warnings.isEmpty();
}

/// The fault that the file at `path` has.
Faults faultOf(const QString& path, const QString& reason)
{
    return {(path + QStringLiteral(": ") + reason).toStdString()};
}

/// Makes a package step by step. Each step gives the faults that keep it from being done.
class PackageMaker
{
public:
    explicit PackageMaker(const PackageSource& source)
        : source(source)
        , options(source.options)
    {
    }

    Checked<MadePackage> run()
    {
        using Step = Faults (PackageMaker::*)();
        for (const Step step : {&PackageMaker::readFiles, &PackageMaker::build, &PackageMaker::findLayout,
                 &PackageMaker::findSoftmax, &PackageMaker::fitKeys}) {
            if (Faults faults = (this->*step)(); !faults.empty()) {
                return faulty(std::move(faults));
            }
        }
        made.configuration = configuration();
        return std::move(made);
    }

private:
    Faults readFiles();
    Faults build();
    Faults findLayout();
    Faults findSoftmax();
    Faults fitKeys();
    QByteArray configuration() const;

    const format::TensorT& tensor(int index) const
    {
        return *made.engine.network->tensors[static_cast<std::size_t>(index)];
    }
    const format::TensorT& input() const { return tensor(made.engine.network->inputs.front()); }
    const format::TensorT& output() const { return tensor(made.engine.network->outputs.front()); }

    const PackageSource& source;
    builder::BuildOptions options;
    MadePackage made;
    FileBytes model;
    Keys keys;
};

Faults PackageMaker::readFiles()
{
    Result<FileBytes> readModel = FileBytes::read(source.model);
    if (!readModel) {
        return faultOf(source.model, textOf(readModel.error()));
    }
    Result<Keys> keysOfModel = readKeys(source.keys);
    if (!keysOfModel) {
        return faultOf(source.keys, textOf(keysOfModel.error()));
    }
    model = std::move(*readModel);
    keys = std::move(*keysOfModel);
    made.notes << keys.notes;
    return {};
}

Faults PackageMaker::build()
{
    Checked<MadeEngine> engine = makeEngine(model, options);
    if (!engine) {
        Faults faults;
        for (const std::string& fault : engine.error()) {
            faults.push_back(source.model.toStdString() + ": " + fault);
        }
        return faults;
    }
    made.engine = std::move(*engine);
    const std::size_t outputs = made.engine.network->outputs.size();
    if (outputs != 1) {
        return faultOf(source.model,
            QStringLiteral("it has %1; exactly one, the scores, can be read").arg(countText(outputs, "output")));
    }
    return {};
}

Faults PackageMaker::findLayout()
{
    if (source.layoutGiven) {
        return {};
    }
    const std::string layout = layoutOf(output().dims);
    if (layout.empty()) {
        return faultOf(source.model,
            QStringLiteral("which axes of its scores, %1, are steps, batch and classes is not clear; see --layout")
                .arg(shapeText(output().dims)));
    }
    if (layout == options.scores.layout) {
        return {};
    }
    options.scores.layout = layout;
    made.notes << QStringLiteral("the scores, %1, are turned into steps x batch x classes (--layout %2)")
                      .arg(shapeText(output().dims), QString::fromStdString(layout));
    return build();
}

Faults PackageMaker::findSoftmax()
{
    if (options.scores.needsSoftmax || givesProbabilities(made.engine.bytes, options.widths.minimum)) {
        return {};
    }
    options.scores.needsSoftmax = true;
    made.notes << QStringLiteral("the scores do not add up to 1: a soft-max was added (--softmax)");
    return build();
}

Faults PackageMaker::fitKeys()
{
    const std::int64_t characters = output().dims.back() - 1;
    if (characters == keys.alphabet.size() + 1) {
        keys.alphabet += QLatin1Char(' ');
        made.notes << QStringLiteral(
            "the model tells one character more apart than there are keys: the last is a space");
    }
    if (characters != keys.alphabet.size()) {
        return faultOf(source.keys,
            QStringLiteral("there are %1 keys, but the model has %2 classes: a blank and %3 characters")
                .arg(groupedText(keys.alphabet.size()), groupedText(characters + 1), groupedText(characters)));
    }
    return {};
}

QByteArray PackageMaker::configuration() const
{
    const Extents& extents = input().dims;
    const QJsonObject dims = {{QStringLiteral("batch"), 1}, {QStringLiteral("channels"), static_cast<int>(extents[1])},
        {QStringLiteral("height"), static_cast<int>(extents[2])}, {QStringLiteral("width"), options.widths.maximum}};
    const QJsonObject info = {{QStringLiteral("input_dims"), dims}, {QStringLiteral("letter_box"), false},
        {QStringLiteral("input_layers"), QJsonArray{QString::fromStdString(input().name)}},
        {QStringLiteral("output_layers"), QJsonArray{QString::fromStdString(output().name)}},
        {QStringLiteral("anchors"), QJsonObject()}};
    // There must be a class; a group of one character changes nothing about it.
    const QJsonObject group = {{QStringLiteral("name"), keys.alphabet.left(1)}, {QStringLiteral("as_ok"), false},
        {QStringLiteral("ok_num"), 0}};
    const QJsonObject root
        = {{QStringLiteral("classes"), QJsonArray{group}}, {QStringLiteral("ignore_char"), QString()},
            {QStringLiteral("alphabet"), keys.alphabet}, {QStringLiteral("model_infer_info"), info}};
    return QJsonDocument(root).toJson();
}

} // namespace

Checked<MadePackage> makePackage(const PackageSource& source)
{
    return PackageMaker(source).run();
}

} // namespace scribo::tool
