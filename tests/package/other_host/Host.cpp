// SPDX-License-Identifier: MIT
#include "core/ITreeElement.h"
#include "core/Log.h"
#include "core/Screen.h"
#include "toolkit/Dialog.h"
#include "toolkit/FileDialog.h"
#include "toolkit/ISystemSettings.h"

#include <QDebug>
#include <QPointer>

#include <algorithm>

ISystemSettings* pSystemSettings = nullptr; // this host remembers nothing

Dialog::Dialog(QWidget* parent)
    : QDialog(parent)
{
}

namespace {

QString ask(QFileDialog* dialog, QFileDialog::FileMode mode, QFileDialog::Options options)
{
    const QPointer<QFileDialog> alive(dialog); // its parent may go meanwhile, and it with it
    dialog->setFileMode(mode);
    dialog->setOptions(options);
    const bool chosen = dialog->exec() == QDialog::Accepted && alive;
    const QString answer = chosen ? alive->selectedFiles().value(0) : QString();
    delete alive;
    return answer;
}

} // namespace

QString FileDialog::getOpenFileName(ISystemSettings*, QWidget* parent, const QString& caption,
    const QString& directory, const QString& filter, QString*, QFileDialog::Options options)
{
    return ask(new QFileDialog(parent, caption, directory, filter), QFileDialog::ExistingFile, options);
}

QString FileDialog::getExistingDirectory(ISystemSettings*, QWidget* parent, const QString& caption,
    const QString& directory, QFileDialog::Options options)
{
    return ask(new QFileDialog(parent, caption, directory), QFileDialog::Directory, options);
}

ITreeElement* ITreeElement::nextSibling() const
{
    if (!parent)
        return nullptr;
    const auto& all = parent->children;
    const auto self =
        std::find_if(all.begin(), all.end(), [this](const auto& one) { return one.get() == this; });
    return self + 1 == all.end() ? nullptr : (self + 1)->get();
}

ITreeElement* ITreeElement::findChild(const char* name) const
{
    for (const auto& child : children)
        if (child->text == name)
            return child.get();
    return nullptr;
}

void ITreeElement::addChild(ITreeElement* child)
{
    child->parent = this;
    children.emplace_back(child);
}

ITreeElement* tav_tree_element_create_instance(
    const char* name, const AttributeDictionary* attributes, const char*)
{
    auto* element = new ITreeElement;
    element->text = name;
    if (attributes)
        element->attributes = *attributes;
    return element;
}

void tav_tree_element_release_instance(ITreeElement* element)
{
    delete element;
}

void SendLogInfo(const char* text, int)
{
    qWarning("%s", text);
}

double dpi_scaled(double length)
{
    return length;
}

const char* AttributeDictionary::value(const char* key) const
{
    for (const auto& [name, value] : entries)
        if (name == key)
            return value.c_str();
    return nullptr;
}

AttributeDictionary* dictionary_get_instance()
{
    return new AttributeDictionary;
}

void dic_set_value(AttributeDictionary* dictionary, const char* key, const char* value)
{
    for (auto& entry : dictionary->entries)
        if (entry.first == key)
            return void(entry.second = value);
    dictionary->entries.emplace_back(key, value);
}

void dictionary_release_instance(AttributeDictionary* dictionary)
{
    delete dictionary;
}
