include $(sort $(wildcard $(BR2_EXTERNAL_BOARDDRIVERS_PATH)/package/*/*.mk))
