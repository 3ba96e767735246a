#include "qsyntaxproperties.h"

#include <QDomDocument>
#include <QFile>
#include <QRegExp>

namespace {

// Spelled as the files spell them, in the order of QSyntaxParam::Type.
const char *const TypeNames[] = {
    "int", "int2", "int3", "intn", "intfloat3", "intfloat3opt",
    "float", "float2", "float2opt", "float3",
    "exp", "exp2", "exp2value", "exp3", "exp4", "expn", "exp2opt", "exp3nil",
    "string", "strexp", "strexp2", "strexp2nil", "expstr", "expstrexp2", "value",
    "nilexp", "expopt", "opint", "opint2", "op2int2", "opStr", "valueeq", "const",
};
static_assert(sizeof(TypeNames) / sizeof(TypeNames[0]) == QSyntaxParam::Unknown,
              "one name for every known grammar");

const char *const RootTag = "syntax";
const char *const ParamTag = "param";

} // namespace

QSyntaxProperties::~QSyntaxProperties() = default;

quint32 QSyntaxProperties::packVersion(const QString &text)
{
    // Two to four dotted parts; "1" alone or "1.1 beta" is no version.
    QRegExp pattern(QStringLiteral("(\\d+)\\.(\\d+)(?:\\.(\\d+))?(?:\\.(\\d+))?"));
    if (!pattern.exactMatch(text))
        return 0;
    quint32 packed = 0;
    for (int part = 1; part <= 4; ++part) {
        const QString digits = pattern.cap(part);
        bool ok = true;
        const uint value = digits.isEmpty() ? 0 : digits.toUInt(&ok);
        // A part must fit its byte, or it would spill into the next one.
        if (!ok || value > 255)
            return 0;
        packed = (packed << 8) | value;
    }
    return packed;
}

int QSyntaxProperties::typeFromName(const QString &name)
{
    for (int type = 0; type < QSyntaxParam::Unknown; ++type) {
        if (name == QLatin1String(TypeNames[type]))
            return type;
    }
    return QSyntaxParam::Unknown;
}

bool QSyntaxProperties::typeUsesPattern(int type)
{
    switch (type) {
    case QSyntaxParam::Exp2Value:
    case QSyntaxParam::StrExp:
    case QSyntaxParam::StrExp2:
    case QSyntaxParam::StrExp2Nil:
    case QSyntaxParam::ExpStr:
    case QSyntaxParam::ExpStrExp2:
    case QSyntaxParam::Value:
    case QSyntaxParam::ValueEq:
        return true;
    default:
        return false;
    }
}

QSyntaxParam QSyntaxProperties::readParam(const QDomElement &element)
{
    QSyntaxParam param;
    param.type = typeFromName(element.attribute(QStringLiteral("type")));
    const QString format = element.attribute(QStringLiteral("format"));
    if (format == QLatin1String("idexp"))
        param.format = QSyntaxParam::IdExp;
    else if (format == QLatin1String("regexp"))
        param.format = QSyntaxParam::RegExp;
    param.minVersion = packVersion(element.attribute(QStringLiteral("minver")));
    param.deprecatedText = element.attribute(QStringLiteral("deprecated"));
    param.deprecatedVersion = packVersion(param.deprecatedText);

    param.ikemenOnly = isIkemenOnly(element);

    if (param.type == QSyntaxParam::IntN) {
        param.extra = element.attribute(QStringLiteral("max"), QStringLiteral("1"));
    } else if (typeUsesPattern(param.type)) {
        param.extra = element.attribute(QStringLiteral("reg_exp"));
        param.ikemenExtra = element.attribute(QStringLiteral("ikemen_reg_exp"));
    } else if (param.type == QSyntaxParam::Exp || param.type == QSyntaxParam::Exp2
               || param.type == QSyntaxParam::Exp3) {
        param.extra = element.attribute(QStringLiteral("arg_reg_exp"));
    }
    // `extra` holds one pattern only: a key pattern replaces the value's.
    const QString keyPattern = QStringLiteral("fmt_reg_exp");
    if (element.hasAttribute(keyPattern))
        param.extra = element.attribute(keyPattern);
    return param;
}

bool QSyntaxProperties::isIkemenOnly(const QDomElement &element)
{
    return element.attribute(QStringLiteral("engine")) == QLatin1String("ikemen");
}

QSyntaxController *QSyntaxProperties::readController(const QDomElement &element)
{
    auto *controller = new QSyntaxController;
    controller->ikemenOnly = isIkemenOnly(element);
    controller->name = element.attribute(QStringLiteral("name"));
    controller->minVersion = packVersion(element.attribute(QStringLiteral("minver")));
    controller->deprecatedText = element.attribute(QStringLiteral("deprecated"));
    controller->deprecatedVersion = packVersion(controller->deprecatedText);
    for (QDomElement child = element.firstChildElement(QLatin1String(ParamTag)); !child.isNull();
         child = child.nextSiblingElement(QLatin1String(ParamTag))) {
        // insert() replaces: the last description of a name wins.
        controller->params.insert(child.attribute(QStringLiteral("name")), readParam(child));
    }
    return controller;
}

QSyntaxProperties::Document QSyntaxProperties::openDocument(const QString &fileName,
                                                            QDomDocument &document)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return Document::Failed;
    if (!document.setContent(&file))
        return Document::Failed;
    return document.documentElement().tagName() == QLatin1String(RootTag) ? Document::Syntax
                                                                            : Document::OtherRoot;
}
