<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR" sourcelanguage="en_US">
<context>
    <name>tst_QLanguageManager</name>
    <message>
        <source>first</source>
        <translation>premier</translation>
    </message>
</context>
</TS>
