<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR" sourcelanguage="en_US">
<context>
    <name>tst_QLanguageManager</name>
    <message>
        <source>second</source>
        <translation>deuxieme</translation>
    </message>
</context>
</TS>
